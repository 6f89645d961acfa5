#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>

#include "platform/base/pixel_buffer.h"
#include "platform/gpu/drawables.h"
#include "platform/gpu/native/native_kernel.h"
#include "platform/gpu/resources.h"
#include "platform/gpu/texture_cache.h"

// The native device's resources: memory of the process, so that storage modes make no difference below the
// checks.
namespace velicor::gpu {

struct FreeMemory {
  void operator()(std::byte* memory) const { std::free(memory); }
};
using PageMemory = std::unique_ptr<std::byte[], FreeMemory>;

// Whole pages, not cleared; empty where there is no memory.
PageMemory allocatePages(std::size_t length);

class NativeBuffer : public Buffer {
 public:
  NativeBuffer(std::shared_ptr<Device> device, PageMemory memory, std::size_t length,
               StorageMode storageMode);
  std::span<std::byte> bytes() const { return {memory_.get(), length()}; }

 private:
  std::byte* onContents() override { return memory_.get(); }

  PageMemory memory_;
};

class NativeTexture : public Texture {
 public:
  // Pixels in memory of the texture's own, or in a picture that it keeps.
  NativeTexture(std::shared_ptr<Device> device, const TextureDescriptor& descriptor, PageMemory memory,
                std::size_t bytesPerRow);
  NativeTexture(std::shared_ptr<Device> device, const TextureDescriptor& descriptor, PixelBufferRef picture);
  ~NativeTexture() override;

  const NativeImage& image() const { return image_; }

 private:
  void onGetBytes(std::byte* bytes, std::size_t bytesPerRow, const Region& region) const override;
  void onReplace(const Region& region, const std::byte* bytes, std::size_t bytesPerRow) override;

  PageMemory memory_;
  PixelBufferRef picture_;
  NativeImage image_;
};

// nullptr where there is no memory.
std::shared_ptr<NativeTexture> makeNativeTexture(std::shared_ptr<Device> device,
                                                 const TextureDescriptor& descriptor);

class NativeTextureCache : public TextureCache {
 public:
  explicit NativeTextureCache(std::shared_ptr<Device> device) : device_(std::move(device)) {}

 private:
  std::shared_ptr<Texture> onTexture(const PixelBufferRef& buffer, int width, int height) override;
  void onFlush() override {}

  std::shared_ptr<Device> device_;
};

// The drawn texture's own memory is the picture.
class NativeDrawableTarget : public DrawableTarget {
 public:
  explicit NativeDrawableTarget(std::shared_ptr<NativeTexture> texture);
  const std::shared_ptr<Texture>& texture() const override { return texture_; }
  const std::byte* bytes() const override { return image_.bytes; }
  std::size_t bytesPerRow() const override { return image_.bytesPerRow; }

 private:
  NativeImage image_;
  std::shared_ptr<Texture> texture_;
};

// Copies rows of `rowLength` bytes between two places with row distances of their own.
void copyRows(std::byte* destination, std::size_t destinationBytesPerRow, const std::byte* source,
              std::size_t sourceBytesPerRow, std::size_t rowLength, int rows);

}  // namespace velicor::gpu
