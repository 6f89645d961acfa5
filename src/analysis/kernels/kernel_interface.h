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

// Counters are unsigned 32-bit. Vectorscope: [Cr row][Cb column], rows from +0.5 down, columns from −0.5.
// Parade: [plane R, G, B][level][column], columns across the rectangle's width.
inline constexpr int scopeBins = 256;
inline constexpr std::size_t planeCounters = std::size_t{scopeBins} * scopeBins;
inline constexpr std::size_t vectorscopeBytes = planeCounters * sizeof(std::uint32_t);
inline constexpr std::size_t paradeBytes = 3 * vectorscopeBytes;

// Every bin covers 2 × 2 pixels of the vectorscope image.
inline constexpr int vectorscopeSide = 2 * scopeBins;

// Three panels of one column a bin, with a gap between each two.
inline constexpr int paradeGap = 6;
inline constexpr int paradeWidth = 3 * scopeBins + 2 * paradeGap;
inline constexpr int paradeHeight = scopeBins;

inline constexpr int threadgroupSide = 16;

}  // namespace velicor::kernels
