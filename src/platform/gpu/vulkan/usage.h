#pragma once

#include <optional>

#include <vulkan/vulkan_core.h>

namespace velicor::gpu::vulkan {

// One way in which a command touches a buffer or an image. Buffers have the layout "undefined" always.
struct Access {
  VkPipelineStageFlags stages = 0;
  VkAccessFlags access = 0;
  bool writes = false;
  VkImageLayout layout = VK_IMAGE_LAYOUT_UNDEFINED;
};

// What a command has to wait for before it may touch a resource: the first half of a barrier.
struct Wait {
  VkPipelineStageFlags stages = 0;
  VkAccessFlags access = 0;
  VkImageLayout layout = VK_IMAGE_LAYOUT_UNDEFINED;
};

// What the commands recorded so far did to a resource, in the order of submission.
class Usage {
 public:
  // What `next` must wait for, if anything; from then on `next` belongs to what was done.
  std::optional<Wait> then(const Access& next);

  // Undefined: an image that nothing was written to yet.
  VkImageLayout layout() const { return layout_; }

 private:
  VkImageLayout layout_ = VK_IMAGE_LAYOUT_UNDEFINED;
  VkPipelineStageFlags writeStages_ = 0;
  VkAccessFlags writeAccess_ = 0;
  // The reads since the last write, which that write is visible to.
  VkPipelineStageFlags readStages_ = 0;
  VkAccessFlags readAccess_ = 0;
};

}  // namespace velicor::gpu::vulkan
