#pragma once

#include <cstddef>
#include <cstdint>

// What the processor and the kernels agree on beside their names: what is bound as bytes, and the layout of
// counters and images.
namespace velicor::kernels {

// The analysed part of the source, in pixels.
struct Rectangle {
  std::uint32_t x = 0;
  std::uint32_t y = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

struct Offset {
  std::uint32_t x = 0;
  std::uint32_t y = 0;
};

// The aspect-fit scale of a drawn texture within its target.
struct Scale {
  float x = 1;
  float y = 1;
};

// Red, green and blue, 0…1.
struct Tint {
  float r;
  float g;
  float b;
};

#include "analysis/kernels/shared/pictures.inc"

// Counters are unsigned 32-bit. Vectorscope: [Cr row][Cb column], rows from +0.5 down, columns from −0.5.
// Parade: [plane R, G, B][level][column], columns across the rectangle's width.
inline constexpr std::size_t planeCounters = std::size_t{scopeBins} * scopeBins;
inline constexpr std::size_t vectorscopeBytes = planeCounters * sizeof(std::uint32_t);
inline constexpr std::size_t paradeBytes = 3 * vectorscopeBytes;

inline constexpr int threadgroupSide = 16;

}  // namespace velicor::kernels
