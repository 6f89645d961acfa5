#pragma once

#include <string>

#include "platform/base/product.h"

namespace velicor {

// What the program calls its own version: "1.0" where the build doesn't say.
inline std::string runningVersion() {
  return product::version().empty() ? "1.0" : std::string(product::version());
}

}  // namespace velicor
