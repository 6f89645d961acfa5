#pragma once

#include <cstddef>
#include <cstdint>

// The plain values of the device interface: formats, sizes, descriptions.
namespace velicor::gpu {

// Four 8-bit normalised channels a pixel, bytes in the order of the name. The numbers are the interface's own
// and never change: they are written into dumps.
enum class PixelFormat : std::uint32_t { rgba8Unorm = 70, bgra8Unorm = 80 };

inline constexpr std::size_t bytesPerPixel = 4;

// shared: the processor can read and write the bytes. deviceOnly: nobody but the device ever sees them; they
// are cleared, filled and copied by commands.
enum class StorageMode { shared, deviceOnly };

// What a texture may be bound as. Combined with |.
enum class TextureUsage : std::uint32_t { none = 0, shaderRead = 1, shaderWrite = 2, renderTarget = 4 };

constexpr TextureUsage operator|(TextureUsage a, TextureUsage b) {
  return static_cast<TextureUsage>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}

// Whether all of `wanted` is among `usage`.
constexpr bool allows(TextureUsage usage, TextureUsage wanted) {
  return (static_cast<std::uint32_t>(usage) & static_cast<std::uint32_t>(wanted)) ==
         static_cast<std::uint32_t>(wanted);
}

// A two-dimensional texture without mipmaps, row 0 at the top.
struct TextureDescriptor {
  PixelFormat pixelFormat = PixelFormat::bgra8Unorm;
  int width = 0;
  int height = 0;
  TextureUsage usage = TextureUsage::shaderRead;
  StorageMode storageMode = StorageMode::deviceOnly;
  friend bool operator==(const TextureDescriptor&, const TextureDescriptor&) = default;
};

// A pixel position in a texture, from its top-left corner.
struct Origin {
  int x = 0;
  int y = 0;
};

struct Extent {
  int width = 0;
  int height = 0;
  friend bool operator==(const Extent&, const Extent&) = default;
};

struct Region {
  Origin origin;
  Extent size;
};

// Threads or threadgroups along x, y and z.
struct GridSize {
  int width = 1;
  int height = 1;
  int depth = 1;
};

// Components 0…1.
struct ClearColor {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;
};

// Bindings go to indices below these numbers; a buffer and inline bytes share one row of indices.
inline constexpr int maxTextureBindings = 4;
inline constexpr int maxBufferBindings = 4;

// Buffers are bound from multiples of this.
inline constexpr std::size_t bufferBindingAlignment = 256;

// Inline bytes are meant for a few numbers, not for data.
inline constexpr std::size_t maxInlineBytes = 4096;

// Larger textures and buffers can't be made.
inline constexpr int maxTextureSide = 16384;
inline constexpr std::size_t maxBufferLength = std::size_t{1} << 27;

}  // namespace velicor::gpu
