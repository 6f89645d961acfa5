#include "platform/gpu/vulkan/ranking.h"

namespace velicor::gpu::vulkan {

namespace {

constexpr std::uint32_t neededThreads = 16 * 16;
constexpr std::uint32_t neededTextureSide = 8192;  // the largest screens there are

std::optional<int> rankOf(VkPhysicalDeviceType type, bool softwareToo) {
  switch (type) {
    case VK_PHYSICAL_DEVICE_TYPE_DISCRETE_GPU:
      return 0;
    case VK_PHYSICAL_DEVICE_TYPE_INTEGRATED_GPU:
      return 1;
    case VK_PHYSICAL_DEVICE_TYPE_VIRTUAL_GPU:
      return 2;
    case VK_PHYSICAL_DEVICE_TYPE_CPU:
      return softwareToo ? std::optional(3) : std::nullopt;
    default:
      return std::nullopt;
  }
}

}  // namespace

std::optional<int> rankOf(const Traits& traits, bool softwareToo) {
  const bool suffices = traits.apiVersion >= VK_API_VERSION_1_2 && traits.queueFamily &&
                        traits.threadsPerThreadgroup >= neededThreads &&
                        traits.textureSide >= neededTextureSide;
  return suffices ? rankOf(traits.type, softwareToo) : std::nullopt;
}

}  // namespace velicor::gpu::vulkan
