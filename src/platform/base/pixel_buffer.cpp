#include "platform/base/pixel_buffer.h"

#include <stdexcept>
#include <utility>

namespace velicor {

namespace {

std::size_t tightRow(int width) { return static_cast<std::size_t>(width) * 4; }

}  // namespace

PixelBuffer::PixelBuffer(int width, int height)
    : width_(width),
      height_(height),
      bytesPerRow_(tightRow(width)),
      own_(std::make_unique<std::byte[]>(tightRow(width) * static_cast<std::size_t>(height))),
      bytes_(own_.get()) {}

PixelBuffer::PixelBuffer(int width, int height, std::size_t bytesPerRow, std::byte* bytes,
                         std::function<void()> release, std::shared_ptr<const void> mapping)
    : width_(width),
      height_(height),
      bytesPerRow_(bytesPerRow),
      bytes_(bytes),
      release_(std::move(release)),
      mapping_(std::move(mapping)) {
  if (bytesPerRow < tightRow(width)) throw std::invalid_argument("pixel buffer rows overlap");
}

PixelBuffer::~PixelBuffer() {
  if (release_) release_();
}

std::span<const std::byte> PixelBuffer::row(int y) const {
  return {bytes_ + bytesPerRow_ * static_cast<std::size_t>(y), tightRow(width_)};
}

}  // namespace velicor
