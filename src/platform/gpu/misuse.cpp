#include "platform/gpu/misuse.h"

#include <cstdlib>
#include <string>

#include "platform/log/log.h"

namespace velicor::gpu {

void misuse(std::string_view what) {
  log::Logger("gpu").error("misuse: " + std::string(what));
  std::abort();
}

}  // namespace velicor::gpu
