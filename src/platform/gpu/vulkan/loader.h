#pragma once

#include "platform/gpu/vulkan/vulkan_device.h"

namespace velicor::gpu::vulkan {

// The entry point of the system's loader, which is opened at the first call and stays; nullptr without one.
VulkanEntryPoint systemEntryPoint();

}  // namespace velicor::gpu::vulkan
