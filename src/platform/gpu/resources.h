#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "platform/gpu/types.h"

// Memory that commands work on. Resources are shared by reference; a command buffer keeps those it names
// until it has completed, so that letting go of one is safe at any time on any thread.
namespace velicor::gpu {

class Device;

// A piece of untyped memory.
class Buffer {
 public:
  virtual ~Buffer() = default;
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  std::size_t length() const { return length_; }
  StorageMode storageMode() const { return storageMode_; }
  const std::shared_ptr<Device>& device() const { return device_; }

  // The bytes themselves; a deviceOnly buffer has none to show, asking for them is a mistake. Reading makes
  // sense after the last command buffer that writes them has completed, writing before the first that reads
  // them is committed.
  std::span<std::byte> contents();

 protected:
  Buffer(std::shared_ptr<Device> device, std::size_t length, StorageMode storageMode);

 private:
  virtual std::byte* onContents() = 0;

  std::shared_ptr<Device> device_;
  std::size_t length_;
  StorageMode storageMode_;
};

// A picture in the device's memory.
class Texture {
 public:
  virtual ~Texture() = default;
  Texture(const Texture&) = delete;
  Texture& operator=(const Texture&) = delete;

  int width() const { return descriptor_.width; }
  int height() const { return descriptor_.height; }
  Extent size() const { return {width(), height()}; }
  PixelFormat pixelFormat() const { return descriptor_.pixelFormat; }
  TextureUsage usage() const { return descriptor_.usage; }
  StorageMode storageMode() const { return descriptor_.storageMode; }
  const std::shared_ptr<Device>& device() const { return device_; }

  // Copies a region's pixels out, rows `bytesPerRow` apart. Only of a shared texture; the last command
  // buffer that writes it must have completed. `bytes` holds at least (height − 1) × bytesPerRow + 4 × width.
  void getBytes(std::span<std::byte> bytes, std::size_t bytesPerRow, const Region& region) const;

  // Copies pixels in, the same way. No command buffer that uses the texture may be under way.
  void replace(const Region& region, std::span<const std::byte> bytes, std::size_t bytesPerRow);

 protected:
  Texture(std::shared_ptr<Device> device, const TextureDescriptor& descriptor);

 private:
  virtual void onGetBytes(std::byte* bytes, std::size_t bytesPerRow, const Region& region) const = 0;
  virtual void onReplace(const Region& region, const std::byte* bytes, std::size_t bytesPerRow) = 0;

  std::shared_ptr<Device> device_;
  TextureDescriptor descriptor_;
};

// Whether the region has pixels and lies inside a texture of this size.
bool fits(const Region& region, Extent texture);

}  // namespace velicor::gpu
