#include "platform/gpu/resources.h"

#include <utility>

#include "platform/gpu/device.h"
#include "platform/gpu/misuse.h"

namespace velicor::gpu {

namespace {

void checkTransfer(const Texture& texture, std::size_t available, std::size_t bytesPerRow,
                   const Region& region) {
  require(texture.storageMode() == StorageMode::shared, "the bytes of a deviceOnly texture can't be reached");
  require(fits(region, texture.size()), "a transfer reaches outside its texture");
  const std::size_t row = bytesPerPixel * static_cast<std::size_t>(region.size.width);
  require(bytesPerRow >= row, "the rows of a transfer overlap");
  require(available >= bytesPerRow * static_cast<std::size_t>(region.size.height - 1) + row,
          "the memory of a transfer is too short");
}

}  // namespace

Buffer::Buffer(std::shared_ptr<Device> device, std::size_t length, StorageMode storageMode)
    : device_(std::move(device)), length_(length), storageMode_(storageMode) {}

std::span<std::byte> Buffer::contents() {
  require(storageMode_ == StorageMode::shared, "the bytes of a deviceOnly buffer can't be reached");
  return {onContents(), length_};
}

Texture::Texture(std::shared_ptr<Device> device, const TextureDescriptor& descriptor)
    : device_(std::move(device)), descriptor_(descriptor) {}

void Texture::getBytes(std::span<std::byte> bytes, std::size_t bytesPerRow, const Region& region) const {
  checkTransfer(*this, bytes.size(), bytesPerRow, region);
  onGetBytes(bytes.data(), bytesPerRow, region);
}

void Texture::replace(const Region& region, std::span<const std::byte> bytes, std::size_t bytesPerRow) {
  checkTransfer(*this, bytes.size(), bytesPerRow, region);
  onReplace(region, bytes.data(), bytesPerRow);
}

bool fits(const Region& region, Extent texture) {
  const auto& [origin, size] = region;
  return size.width > 0 && size.height > 0 && origin.x >= 0 && origin.y >= 0 &&
         size.width <= texture.width - origin.x && size.height <= texture.height - origin.y;
}

}  // namespace velicor::gpu
