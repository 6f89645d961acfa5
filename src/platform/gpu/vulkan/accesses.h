#pragma once

#include "platform/gpu/vulkan/usage.h"

// The ways in which the commands of this device touch buffers and images.
namespace velicor::gpu::vulkan::accesses {

inline constexpr Access copyFromBuffer{VK_PIPELINE_STAGE_TRANSFER_BIT, VK_ACCESS_TRANSFER_READ_BIT, false,
                                       VK_IMAGE_LAYOUT_UNDEFINED};
inline constexpr Access copyToBuffer{VK_PIPELINE_STAGE_TRANSFER_BIT, VK_ACCESS_TRANSFER_WRITE_BIT, true,
                                     VK_IMAGE_LAYOUT_UNDEFINED};
inline constexpr Access copyFromImage{VK_PIPELINE_STAGE_TRANSFER_BIT, VK_ACCESS_TRANSFER_READ_BIT, false,
                                      VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL};
inline constexpr Access copyToImage{VK_PIPELINE_STAGE_TRANSFER_BIT, VK_ACCESS_TRANSFER_WRITE_BIT, true,
                                    VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL};
inline constexpr Access draw{VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT,
                             VK_ACCESS_COLOR_ATTACHMENT_READ_BIT | VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT, true,
                             VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL};

// A function may read or write any buffer that it is given.
constexpr Access functionBuffer(VkPipelineStageFlags stage) {
  return {stage, VK_ACCESS_SHADER_READ_BIT | VK_ACCESS_SHADER_WRITE_BIT, true, VK_IMAGE_LAYOUT_UNDEFINED};
}

constexpr Access storeToImage(VkPipelineStageFlags stage) {
  return {stage, VK_ACCESS_SHADER_READ_BIT | VK_ACCESS_SHADER_WRITE_BIT, true, VK_IMAGE_LAYOUT_GENERAL};
}

// Images that functions also store to stay in the layout for that, so that one dispatch may do both.
constexpr Access readImage(VkPipelineStageFlags stage, bool alsoStored) {
  return {stage, VK_ACCESS_SHADER_READ_BIT, false,
          alsoStored ? VK_IMAGE_LAYOUT_GENERAL : VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL};
}

}  // namespace velicor::gpu::vulkan::accesses
