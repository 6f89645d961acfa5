#include "platform/gpu/native/native_resources.h"

#include <cstring>
#include <utility>

#include "platform/base/recycling.h"

namespace velicor::gpu {

namespace {

constexpr std::size_t pageSize = 4096;
constexpr std::size_t rowAlignment = 64;  // a cache line, and the widest vector registers

constexpr std::size_t roundedUp(std::size_t value, std::size_t unit) {
  return (value + unit - 1) / unit * unit;
}

std::size_t rowLength(int width) { return bytesPerPixel * static_cast<std::size_t>(width); }

}  // namespace

PageMemory allocatePages(std::size_t length) {
  return PageMemory(static_cast<std::byte*>(std::aligned_alloc(pageSize, roundedUp(length, pageSize))));
}

NativeBuffer::NativeBuffer(std::shared_ptr<Device> device, PageMemory memory, std::size_t length,
                           StorageMode storageMode)
    : Buffer(std::move(device), length, storageMode), memory_(std::move(memory)) {}

NativeTexture::NativeTexture(std::shared_ptr<Device> device, const TextureDescriptor& descriptor,
                             PageMemory memory, std::size_t bytesPerRow)
    : Texture(std::move(device), descriptor), memory_(std::move(memory)) {
  image_ = {memory_.get(), bytesPerRow, width(), height(), pixelFormat()};
}

NativeTexture::NativeTexture(std::shared_ptr<Device> device, const TextureDescriptor& descriptor,
                             PixelBufferRef picture)
    : Texture(std::move(device), descriptor), picture_(std::move(picture)) {
  image_ = {picture_->bytes(), picture_->bytesPerRow(), width(), height(), pixelFormat()};
}

// What was on the screen does not stay in memory that is free. A plain fill of it could be left out.
NativeTexture::~NativeTexture() {
  if (memory_) explicit_bzero(memory_.get(), image_.bytesPerRow * static_cast<std::size_t>(height()));
}

void NativeTexture::onGetBytes(std::byte* bytes, std::size_t bytesPerRow, const Region& region) const {
  copyRows(bytes, bytesPerRow, image_.pixel(region.origin.x, region.origin.y), image_.bytesPerRow,
           rowLength(region.size.width), region.size.height);
}

void NativeTexture::onReplace(const Region& region, const std::byte* bytes, std::size_t bytesPerRow) {
  copyRows(image_.pixel(region.origin.x, region.origin.y), image_.bytesPerRow, bytes, bytesPerRow,
           rowLength(region.size.width), region.size.height);
}

std::shared_ptr<NativeTexture> makeNativeTexture(std::shared_ptr<Device> device,
                                                 const TextureDescriptor& descriptor) {
  const std::size_t bytesPerRow = roundedUp(rowLength(descriptor.width), rowAlignment);
  const std::size_t length = bytesPerRow * static_cast<std::size_t>(descriptor.height);
  PageMemory memory = allocatePages(length);
  if (!memory) return nullptr;
  // What a pass leaves out must not show what the memory held before.
  std::memset(memory.get(), 0, length);
  return std::make_shared<NativeTexture>(std::move(device), descriptor, std::move(memory), bytesPerRow);
}

std::shared_ptr<Texture> NativeTextureCache::onTexture(const PixelBufferRef& buffer, int width, int height) {
  const TextureDescriptor descriptor{PixelFormat::bgra8Unorm, width, height, TextureUsage::shaderRead,
                                     StorageMode::deviceOnly};
  return makeRecycled<NativeTexture>(device_, descriptor, buffer);
}

NativeDrawableTarget::NativeDrawableTarget(std::shared_ptr<NativeTexture> texture)
    : image_(texture->image()), texture_(std::move(texture)) {}

void copyRows(std::byte* destination, std::size_t destinationBytesPerRow, const std::byte* source,
              std::size_t sourceBytesPerRow, std::size_t rowLength, int rows) {
  for (int y = 0; y < rows; ++y) {
    std::memcpy(destination, source, rowLength);
    destination += destinationBytesPerRow;
    source += sourceBytesPerRow;
  }
}

}  // namespace velicor::gpu
