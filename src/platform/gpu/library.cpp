#include "platform/gpu/library.h"

#include <utility>

namespace velicor::gpu {

Library::Library(std::shared_ptr<Device> device, KernelBundle bundle)
    : device_(std::move(device)), bundle_(std::move(bundle)) {}

std::shared_ptr<const Function> Library::function(std::string_view name) const {
  const auto found = bundle_.find(name);
  if (found == bundle_.end()) return nullptr;
  return std::make_shared<const Function>(Function{found->first, found->second, device_});
}

}  // namespace velicor::gpu
