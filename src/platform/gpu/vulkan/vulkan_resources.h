#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/gpu/drawables.h"
#include "platform/gpu/resources.h"
#include "platform/gpu/vulkan/backing.h"

// The Vulkan device's resources. Each has something behind it in a device context; what is behind it in a
// lost one is replaced when the resource is next used. Unless said otherwise members are for the thread that
// records.
namespace velicor::gpu::vulkan {

// Bytes of a row of so many pixels, without a gap after it.
inline std::size_t rowLength(int width) { return bytesPerPixel * static_cast<std::size_t>(width); }

class VulkanBuffer : public Buffer {
 public:
  // Throws vk::SystemError.
  VulkanBuffer(std::shared_ptr<Device> device, const ContextRef& context, std::size_t length,
               StorageMode storageMode);

  // Throws vk::SystemError where it has to be made anew and can't.
  BufferBacking& backing(const ContextRef& context);

 private:
  std::byte* onContents() override;

  std::mutex mutex_;
  // The one in use last. Those before stay where the caller may still hold their bytes.
  std::vector<std::unique_ptr<BufferBacking>> backings_;
};

// A texture is an image, or rows of pixels in memory that the main processor reaches too, or both: shared
// textures and drawables have rows that follow the image, frames are rows that an image is made of only when
// a function wants to read it.
class VulkanTexture : public Texture {
 public:
  // Throws vk::SystemError.
  VulkanTexture(std::shared_ptr<Device> device, const ContextRef& context,
                const TextureDescriptor& descriptor, bool hasRows);
  // Just rows.
  VulkanTexture(std::shared_ptr<Device> device, const TextureDescriptor& descriptor,
                std::shared_ptr<BufferBacking> rows, std::size_t bytesPerRow);

  // These throw vk::SystemError where something has to be made anew and can't.
  ImageBacking& image(const ContextRef& context);
  virtual BufferBacking& rows(const ContextRef& context);

  bool hasRows() const { return rows_ != nullptr; }
  std::size_t bytesPerRow() const { return bytesPerRow_; }
  const std::byte* rowBytes() const { return rows_->bytes(); }  // any thread, when no work is under way

  // The rows hold what the image still has to get.
  bool rowsAreNewer = false;

 protected:
  const std::shared_ptr<BufferBacking>& rowsAsTheyAre() const { return rows_; }

 private:
  void onGetBytes(std::byte* bytes, std::size_t bytesPerRow, const Region& region) const override;
  void onReplace(const Region& region, const std::byte* bytes, std::size_t bytesPerRow) override;
  std::byte* rowPixel(const Origin& origin) const;

  std::unique_ptr<ImageBacking> image_;
  std::shared_ptr<BufferBacking> rows_;
  std::size_t bytesPerRow_ = 0;
};

// An image that is drawn to, and rows that it is read back into when it is presented.
class VulkanDrawableTarget : public DrawableTarget {
 public:
  explicit VulkanDrawableTarget(std::shared_ptr<VulkanTexture> texture)
      : texture_(std::move(texture)), base_(texture_) {}
  const std::shared_ptr<Texture>& texture() const override { return base_; }
  const std::byte* bytes() const override { return texture_->rowBytes(); }
  std::size_t bytesPerRow() const override { return texture_->bytesPerRow(); }
  VulkanTexture& target() const { return *texture_; }

 private:
  std::shared_ptr<VulkanTexture> texture_;
  std::shared_ptr<Texture> base_;
};

}  // namespace velicor::gpu::vulkan
