#include "platform/gpu/texture_cache.h"

#include "platform/gpu/misuse.h"

namespace velicor::gpu {

std::shared_ptr<Texture> TextureCache::texture(const PixelBufferRef& buffer, PixelFormat format, int width,
                                               int height) {
  require(width > 0 && height > 0, "a wrapped texture has no pixels");
  if (!buffer || format != PixelFormat::bgra8Unorm) return nullptr;
  if (width > buffer->width() || height > buffer->height()) return nullptr;
  if (width > maxTextureSide || height > maxTextureSide) return nullptr;
  return onTexture(buffer, width, height);
}

}  // namespace velicor::gpu
