#include "platform/gpu/device.h"
#include "platform/gpu/native/native_device.h"
#include "platform/gpu/vulkan/vulkan_device.h"

namespace velicor::gpu {

namespace {

std::shared_ptr<Device> makeBestDevice() {
  std::shared_ptr<Device> device = isVulkanWorthLoading() ? makeVulkanDevice() : nullptr;
  return device ? device : makeNativeDevice();
}

}  // namespace

std::shared_ptr<Device> systemDefaultDevice() {
  // Never destroyed: work may be under way when the process ends.
  static const auto* const device = new std::shared_ptr<Device>(makeBestDevice());
  return *device;
}

}  // namespace velicor::gpu
