#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "analysis/kernels/image_access.h"

// What the native kernels do to the pixels of one row. Every function is there twice: in vectors, as wide as
// the processor has them, and plainly, as the formulas are written. Both give the same values bit for bit; a
// processor without vectors that would do takes the plain form. Rows may begin at any byte.
namespace velicor::kernels {

// The colours of the zones on the line, drifting green and drifting pink.
using ZoneColors = std::array<Packed, 3>;

// The colour of every step of the heat scale.
using HeatColors = std::array<Packed, color::heatSteps + 1>;

// A place along a row of texels: the left one of two neighbours, and the weight of the right one in 1/256.
struct Tap {
  std::int32_t texel;  // −1 … the last
  std::uint32_t weight;
};

// Neighbours in a row of texels: begin ≤ i < end, one at least.
struct TexelRun {
  std::int32_t begin;
  std::int32_t end;
};

// Four channels of a texel between two rows, 256 times a byte, less 32768.
using MixedTexel = std::array<std::int16_t, 4>;

// A row of pixels to be read, in either order of the channels.
struct SourceRow {
  const std::byte* pixels;
  gpu::PixelFormat format;
};

// The skin indicator's and the heatmap's opaque RGBA pixels of a row.
void paintSkin(SourceRow from, std::byte* to, std::size_t count, const ZoneColors& zones);
void paintHeat(SourceRow from, std::byte* to, std::size_t count, const HeatColors& heat);

// The vectorscope's bin, row × 256 + column, of each pixel.
void findChromaBins(SourceRow from, std::uint32_t* bins, std::size_t count);

// colors[min(counter, last)] of each counter. The colour of 0 is black. There are 64 colors or more to be
// read.
void traceCounters(const std::uint32_t* counters, std::size_t count, const Packed* colors, std::uint32_t last,
                   Packed* to);

// Adds rows of `columns` counters, one behind the other, to rows that lie `pitch` counters apart, and clears
// them.
void moveCounters(std::uint32_t* from, std::size_t columns, std::uint32_t* to, std::size_t pitch,
                  std::size_t rows);

// RGBA to BGRA and back.
void copySwapped(const std::byte* from, std::byte* to, std::size_t count);

// upper × (256 − weight) + lower × weight of each texel.
void mixRows(const std::byte* upper, const std::byte* lower, std::uint32_t weight, MixedTexel* to,
             std::size_t count);

// The pixels at the taps, rounded to the nearest once. There are texels from −1 to one behind the last tap's.
void sampleMixed(const MixedTexel* texels, const Tap* taps, std::size_t count, bool swapsRedAndBlue,
                 std::byte* to);

// Raises each channel of each texel to that of the other row where that is higher.
void brighten(std::byte* texels, const std::byte* other, std::size_t count);

// The highest value of each channel in each run.
void findBrightest(const std::byte* texels, const TexelRun* runs, std::size_t count, bool swapsRedAndBlue,
                   std::byte* to);

namespace plain {

void paintSkin(SourceRow from, std::byte* to, std::size_t count, const ZoneColors& zones);
void paintHeat(SourceRow from, std::byte* to, std::size_t count, const HeatColors& heat);
void findChromaBins(SourceRow from, std::uint32_t* bins, std::size_t count);
void traceCounters(const std::uint32_t* counters, std::size_t count, const Packed* colors, std::uint32_t last,
                   Packed* to);
void moveCounters(std::uint32_t* from, std::size_t columns, std::uint32_t* to, std::size_t pitch,
                  std::size_t rows);
void copySwapped(const std::byte* from, std::byte* to, std::size_t count);
void mixRows(const std::byte* upper, const std::byte* lower, std::uint32_t weight, MixedTexel* to,
             std::size_t count);
void sampleMixed(const MixedTexel* texels, const Tap* taps, std::size_t count, bool swapsRedAndBlue,
                 std::byte* to);
void brighten(std::byte* texels, const std::byte* other, std::size_t count);
void findBrightest(const std::byte* texels, const TexelRun* runs, std::size_t count, bool swapsRedAndBlue,
                   std::byte* to);

}  // namespace plain

}  // namespace velicor::kernels
