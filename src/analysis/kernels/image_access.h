#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include "analysis/kernels/pixel_math.h"
#include "platform/gpu/native/native_kernel.h"

// How the native kernels read and write pixels.
namespace velicor::kernels {

// Byte positions of the channels within a pixel.
struct ChannelOrder {
  std::size_t red;
  std::size_t blue;
};

inline ChannelOrder orderOf(gpu::PixelFormat format) {
  return format == gpu::PixelFormat::bgra8Unorm ? ChannelOrder{2, 0} : ChannelOrder{0, 2};
}

inline color::Pixel pixelAt(const std::byte* pixel, ChannelOrder order) {
  return {std::to_integer<std::int32_t>(pixel[order.red]), std::to_integer<std::int32_t>(pixel[1]),
          std::to_integer<std::int32_t>(pixel[order.blue])};
}

// Four bytes as they lie in memory.
using Packed = std::uint32_t;

inline Packed packed(std::array<std::uint8_t, 4> bytes) {
  Packed result;
  std::memcpy(&result, bytes.data(), sizeof result);
  return result;
}

inline void store(std::byte* pixel, Packed value) { std::memcpy(pixel, &value, sizeof value); }

// With the first and the third byte exchanged.
constexpr Packed swapped(Packed pixel) {
  const Packed outer = pixel & 0x00FF00FF;
  return (pixel & 0xFF00FF00) | outer >> 16 | outer << 16;
}

inline Packed opaque(std::int32_t red, std::int32_t green, std::int32_t blue) {
  return packed({static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
                 static_cast<std::uint8_t>(blue), 255});
}

}  // namespace velicor::kernels
