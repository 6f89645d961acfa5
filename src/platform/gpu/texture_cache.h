#pragma once

#include <memory>

#include "platform/base/pixel_buffer.h"
#include "platform/gpu/resources.h"
#include "platform/gpu/types.h"

namespace velicor::gpu {

class Device;

// Wraps pictures in main memory as textures without a copy by the caller. One thread at a time.
class TextureCache {
 public:
  virtual ~TextureCache() = default;
  TextureCache(const TextureCache&) = delete;
  TextureCache& operator=(const TextureCache&) = delete;

  // A texture (usage shaderRead, deviceOnly) that shows the first `width` × `height` pixels of the buffer and
  // keeps the buffer. The texture must be held until the last command buffer that reads it has completed.
  // nullptr where the buffer is smaller than that, the format is not the buffer's (BGRA), or the device has
  // no room.
  std::shared_ptr<Texture> texture(const PixelBufferRef& buffer, PixelFormat format, int width, int height);

  // Lets go of what served wrappers that are no longer in use. Cheap; once a frame.
  void flush() { onFlush(); }

 protected:
  TextureCache() = default;

 private:
  virtual std::shared_ptr<Texture> onTexture(const PixelBufferRef& buffer, int width, int height) = 0;
  virtual void onFlush() = 0;
};

}  // namespace velicor::gpu
