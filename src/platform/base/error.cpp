#include "platform/base/error.h"

namespace velicor {

tl::unexpected<Error> failure(std::string_view domain, int code, std::string_view description) {
  return tl::make_unexpected(Error{std::string(domain), code, std::string(description)});
}

}  // namespace velicor
