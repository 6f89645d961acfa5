#include "platform/gpu/device.h"
#include "platform/gpu/native/native_device.h"

namespace velicor::gpu {

std::shared_ptr<Device> systemDefaultDevice() {
  // Never destroyed: work may be under way when the process ends.
  static const auto* const device = new std::shared_ptr<Device>(makeNativeDevice());
  return *device;
}

}  // namespace velicor::gpu
