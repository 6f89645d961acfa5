#pragma once

#include <exception>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/base/pixel_buffer.h"
#include "platform/gpu/texture_cache.h"
#include "platform/gpu/vulkan/timeline.h"
#include "platform/gpu/vulkan/vulkan_resources.h"

// How pictures in main memory get to the device.
namespace velicor::gpu::vulkan {

// A frame was made in a device context that is gone.
class FrameGone : public std::exception {};

// Mapped memory of the driver's that frames are copied through, a few pieces that go round. Any thread.
class StagingPool {
 public:
  // Throws vk::SystemError.
  std::shared_ptr<BufferBacking> take(const ContextRef& context, std::size_t size);
  void giveBack(std::shared_ptr<BufferBacking> staging);

 private:
  std::mutex mutex_;
  std::vector<std::shared_ptr<BufferBacking>> idle_;
};

// A picture as a texture: rows that are the picture itself, or a copy that is made when a command first wants
// them, on the thread that records.
class VulkanFrame : public VulkanTexture {
 public:
  // The rows are the picture.
  VulkanFrame(std::shared_ptr<Device> device, const TextureDescriptor& descriptor, PixelBufferRef picture,
              std::shared_ptr<BufferBacking> import);
  // The rows get a copy of the picture, and go back to the pool.
  VulkanFrame(std::shared_ptr<Device> device, const TextureDescriptor& descriptor, PixelBufferRef picture,
              std::shared_ptr<BufferBacking> staging, std::shared_ptr<StagingPool> pool);
  ~VulkanFrame() override;

  // Throws FrameGone too.
  BufferBacking& rows(const ContextRef& context) override;

 private:
  PixelBufferRef picture_;
  std::shared_ptr<StagingPool> pool_;
  bool mustCopy_;
};

class VulkanTextureCache : public TextureCache {
 public:
  // The device keeps the timeline.
  VulkanTextureCache(std::shared_ptr<Device> device, Timeline& timeline)
      : device_(std::move(device)), timeline_(timeline) {}

 private:
  std::shared_ptr<Texture> onTexture(const PixelBufferRef& buffer, int width, int height) override;
  void onFlush() override;

  // nullptr where the picture is small, or can't be read where it lies.
  std::shared_ptr<BufferBacking> importOf(const ContextRef& context, PixelBuffer& picture);
  void noteShortage(const ContextRef& context);

  std::shared_ptr<Device> device_;
  Timeline& timeline_;
  std::shared_ptr<StagingPool> pool_ = std::make_shared<StagingPool>();

  // Captured frames come in the same few mappings again and again.
  struct Import {
    const std::byte* bytes;
    std::shared_ptr<BufferBacking> memory;
  };
  std::vector<Import> imports_;

  // A device that refused is not asked again; one that had no memory a few times.
  std::weak_ptr<const DeviceContext> refusing_;
  int refusals_ = 0;  // for want of memory, since the last import
};

}  // namespace velicor::gpu::vulkan
