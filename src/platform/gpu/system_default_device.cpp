#include "platform/gpu/device.h"
#include "platform/gpu/native/native_device.h"

namespace velicor::gpu {

std::shared_ptr<Device> systemDefaultDevice() {
  static const std::shared_ptr<Device> device = makeNativeDevice();
  return device;
}

}  // namespace velicor::gpu
