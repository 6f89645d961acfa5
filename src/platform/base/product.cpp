#include "platform/base/product.h"

#include "product_version.h"

namespace velicor::product {

std::string_view version() { return VELICOR_VERSION; }

std::string_view build() { return VELICOR_BUILD; }

}  // namespace velicor::product
