#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

namespace velicor {

// One picture in main memory: 32-bit pixels, bytes B, G, R, A in this order, row 0 at the top. Rows are
// `bytesPerRow` bytes apart, at least 4 × width. The alpha byte carries no meaning.
//
// Immutable size, shared by reference. Whoever holds the last reference gives the memory back to its owner
// (a pool of capture segments, the heap) on whatever thread that happens. Contents are written by the
// producer before the buffer is handed on and never afterwards.
class PixelBuffer {
 public:
  // Memory of the buffer's own, zero-filled.
  PixelBuffer(int width, int height);

  // Foreign memory. `release` runs once, when the buffer is destroyed, on any thread. `mapping` keeps whole
  // pages there that the bytes begin and lie in, where there is such a thing: buffers come and go in the same
  // few mappings, and who holds one may go on reading it.
  PixelBuffer(int width, int height, std::size_t bytesPerRow, std::byte* bytes, std::function<void()> release,
              std::shared_ptr<const void> mapping = nullptr);

  ~PixelBuffer();
  PixelBuffer(const PixelBuffer&) = delete;
  PixelBuffer& operator=(const PixelBuffer&) = delete;

  int width() const { return width_; }
  int height() const { return height_; }
  std::size_t bytesPerRow() const { return bytesPerRow_; }
  std::byte* bytes() { return bytes_; }
  const std::byte* bytes() const { return bytes_; }
  std::span<const std::byte> row(int y) const;
  const std::shared_ptr<const void>& mapping() const { return mapping_; }

 private:
  int width_;
  int height_;
  std::size_t bytesPerRow_;
  std::unique_ptr<std::byte[]> own_;
  std::byte* bytes_;
  std::function<void()> release_;
  std::shared_ptr<const void> mapping_;
};

using PixelBufferRef = std::shared_ptr<PixelBuffer>;

}  // namespace velicor
