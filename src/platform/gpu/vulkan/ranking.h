#pragma once

#include <cstdint>
#include <optional>

#include <vulkan/vulkan_core.h>

namespace velicor::gpu::vulkan {

// What decides whether a graphics processor is used, and before which others.
struct Traits {
  VkPhysicalDeviceType type = VK_PHYSICAL_DEVICE_TYPE_OTHER;
  std::uint32_t apiVersion = 0;
  std::optional<std::uint32_t> queueFamily;  // one that computes and draws
  std::uint32_t threadsPerThreadgroup = 0;
  std::uint32_t textureSide = 0;
};

// Smaller is better; none where the processor can't carry the interface or is none.
std::optional<int> rankOf(const Traits& traits, bool softwareToo);

}  // namespace velicor::gpu::vulkan
