#include "platform/gpu/device.h"
#include "platform/gpu/native/native_device.h"
#include "platform/gpu/vulkan/vulkan_device.h"

namespace velicor::gpu {

namespace {

VulkanProbe& probe() {
  static VulkanProbe instance;
  return instance;
}

std::shared_ptr<Device> makeBestDevice() {
  std::shared_ptr<Device> device = probe().isWorthLoading() ? makeVulkanDevice() : nullptr;
  return device ? device : makeNativeDevice();
}

}  // namespace

void findGraphicsProcessors() { probe(); }

std::shared_ptr<Device> systemDefaultDevice() {
  // Never destroyed: work may be under way when the process ends.
  static const auto* const device = new std::shared_ptr<Device>(makeBestDevice());
  return *device;
}

}  // namespace velicor::gpu
