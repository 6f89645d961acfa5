#include "platform/gpu/vulkan/vulkan_resources.h"

#include <cstring>
#include <utility>

#include "platform/gpu/native/native_resources.h"

namespace velicor::gpu::vulkan {

namespace {

MemoryKind kindOf(StorageMode mode) {
  return mode == StorageMode::shared ? MemoryKind::readBack : MemoryKind::deviceOnly;
}

std::string nameOf(const Buffer& buffer) { return "buffer of " + std::to_string(buffer.length()); }

std::string nameOf(const Texture& texture) {
  return (texture.pixelFormat() == PixelFormat::bgra8Unorm ? "BGRA " : "RGBA ") +
         std::to_string(texture.width()) + " x " + std::to_string(texture.height());
}

TextureDescriptor descriptorOf(const Texture& texture) {
  return {texture.pixelFormat(), texture.width(), texture.height(), texture.usage(), texture.storageMode()};
}

std::unique_ptr<ImageBacking> makeImage(const Texture& texture, const ContextRef& context) {
  return std::make_unique<ImageBacking>(context, descriptorOf(texture), nameOf(texture));
}

std::shared_ptr<BufferBacking> makeRows(const Texture& texture, const ContextRef& context) {
  const std::size_t size = rowLength(texture.width()) * static_cast<std::size_t>(texture.height());
  auto rows =
      std::make_shared<BufferBacking>(context, size, MemoryKind::readBack, "rows of " + nameOf(texture));
  // Memory comes back from other resources; nothing of theirs may show.
  std::memset(rows->bytes(), 0, size);
  return rows;
}

}  // namespace

VulkanBuffer::VulkanBuffer(std::shared_ptr<Device> device, const ContextRef& context, std::size_t length,
                           StorageMode storageMode)
    : Buffer(std::move(device), length, storageMode) {
  backings_.push_back(std::make_unique<BufferBacking>(context, length, kindOf(storageMode), nameOf(*this)));
}

BufferBacking& VulkanBuffer::backing(const ContextRef& context) {
  const std::scoped_lock guard(mutex_);
  if (backings_.back()->context != context) {
    auto fresh = std::make_unique<BufferBacking>(context, length(), kindOf(storageMode()), nameOf(*this));
    if (storageMode() == StorageMode::deviceOnly) {
      backings_.clear();
    } else {
      // What the caller wrote into it meanwhile.
      std::memcpy(fresh->bytes(), backings_.back()->bytes(), length());
    }
    backings_.push_back(std::move(fresh));
  }
  return *backings_.back();
}

std::byte* VulkanBuffer::onContents() {
  const std::scoped_lock guard(mutex_);
  return backings_.back()->bytes();
}

VulkanTexture::VulkanTexture(std::shared_ptr<Device> device, const ContextRef& context,
                             const TextureDescriptor& descriptor, bool hasRows)
    : Texture(std::move(device), descriptor),
      image_(makeImage(*this, context)),
      rows_(hasRows ? makeRows(*this, context) : nullptr),
      bytesPerRow_(rowLength(width())) {}

VulkanTexture::VulkanTexture(std::shared_ptr<Device> device, const TextureDescriptor& descriptor,
                             std::shared_ptr<BufferBacking> rows, std::size_t bytesPerRow)
    : Texture(std::move(device), descriptor),
      rowsAreNewer(true),
      rows_(std::move(rows)),
      bytesPerRow_(bytesPerRow) {}

ImageBacking& VulkanTexture::image(const ContextRef& context) {
  if (!image_ || image_->context != context) image_ = makeImage(*this, context);
  return *image_;
}

BufferBacking& VulkanTexture::rows(const ContextRef& context) {
  if (rows_->context != context) {
    auto fresh = makeRows(*this, context);
    if (rowsAreNewer) std::memcpy(fresh->bytes(), rows_->bytes(), fresh->size);
    rows_ = std::move(fresh);
  }
  return *rows_;
}

std::byte* VulkanTexture::rowPixel(const Origin& origin) const {
  return rows_->bytes() + bytesPerRow_ * static_cast<std::size_t>(origin.y) + rowLength(origin.x);
}

void VulkanTexture::onGetBytes(std::byte* bytes, std::size_t bytesPerRow, const Region& region) const {
  copyRows(bytes, bytesPerRow, rowPixel(region.origin), bytesPerRow_, rowLength(region.size.width),
           region.size.height);
}

void VulkanTexture::onReplace(const Region& region, const std::byte* bytes, std::size_t bytesPerRow) {
  copyRows(rowPixel(region.origin), bytesPerRow_, bytes, bytesPerRow, rowLength(region.size.width),
           region.size.height);
  rowsAreNewer = true;
}

}  // namespace velicor::gpu::vulkan
