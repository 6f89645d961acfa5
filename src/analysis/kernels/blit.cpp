#include <algorithm>
#include <cstring>
#include <vector>

#include "analysis/kernels/blit_places.h"
#include "analysis/kernels/kernel_interface.h"
#include "analysis/kernels/native_kernels.h"
#include "analysis/kernels/rows/rows.h"
#include "platform/gpu/native/scratch.h"

namespace velicor::kernels {

namespace {

// Texels that fall on pixels one by one.
void copyTexels(const std::byte* from, bool swapsRedAndBlue, std::byte* to, std::size_t count) {
  if (swapsRedAndBlue) {
    copySwapped(from, to, count);
  } else {
    std::memcpy(to, from, gpu::bytesPerPixel * count);
  }
}

// Bilinear, rounded to the nearest once. Of the two rows that the span lies between, what the taps need is
// mixed first; edges are held by a copy of the outermost texel on either side.
void sampleTexels(const gpu::NativeImage& source, std::int64_t row, const std::vector<Tap>& taps,
                  bool swapsRedAndBlue, std::byte* to) {
  const auto held = [](std::int64_t place, int count) {
    return static_cast<int>(std::clamp<std::int64_t>(place, 0, count - 1));
  };
  const auto [leftmost, rightmost] = std::minmax(taps.front().texel, taps.back().texel);
  const int begin = held(leftmost, source.width), end = held(rightmost + 1, source.width) + 1;
  const auto texels = gpu::scratch<MixedTexel>(static_cast<std::size_t>(source.width) + 2);
  MixedTexel* first = &texels[1];
  mixRows(source.pixel(begin, held(row >> 8, source.height)),
          source.pixel(begin, held((row >> 8) + 1, source.height)), static_cast<std::uint32_t>(row & 255),
          first + begin, static_cast<std::size_t>(end - begin));
  if (leftmost < 0) first[-1] = first[0];
  if (rightmost + 1 >= source.width) first[source.width] = first[source.width - 1];
  sampleMixed(first, taps.data(), taps.size(), swapsRedAndBlue, to);
}

Tap tapAt(double u, int width) {
  const std::int64_t place = position(u, width);
  return {static_cast<std::int32_t>(place >> 8), static_cast<std::uint32_t>(place & 255)};
}

}  // namespace

InnerSpan innerSpan(const gpu::FragmentSpan& span, int width) {
  const auto isInsideAt = [&](int x) {
    return isInside(position(span.u + span.du * (x - span.xBegin), width), width);
  };
  InnerSpan inner{span.xBegin, span.xEnd};
  while (inner.begin < inner.end && !isInsideAt(inner.begin))
    ++inner.begin;
  while (inner.begin < inner.end && !isInsideAt(inner.end - 1))
    --inner.end;
  return inner;
}

gpu::NativeVertex blitVertex(const gpu::NativeArguments& arguments, int vertexIndex) {
  const auto scale = arguments.value<Scale>(0);
  const float x = vertexIndex == 1 ? blitFar : blitNear;
  const float y = vertexIndex == 2 ? blitFar : blitNear;
  return {x * scale.x, y * scale.y, (x + 1) * 0.5F, (1 - y) * 0.5F};
}

void blitFragment(const gpu::NativeArguments& arguments, const gpu::FragmentSpan& span) {
  const gpu::NativeImage& source = arguments.texture(0);
  const std::int64_t row = position(span.v, source.height);
  if (!isInside(row, source.height)) return;
  const InnerSpan inner = innerSpan(span, source.width);
  if (inner.begin >= inner.end) return;
  thread_local RowPlaces<Tap> lastTaps;
  const std::vector<Tap>& taps =
      lastTaps.of(span, inner, source.width, [&](double u) { return tapAt(u, source.width); });
  const bool swapsRedAndBlue = source.format != span.target.format;
  std::byte* to = span.target.pixel(inner.begin, span.y);
  const auto steps = static_cast<std::int32_t>(taps.size() - 1);
  const bool isOnTexels = (row & 255) == 0 && taps.front().weight == 0 && taps.back().weight == 0 &&
                          taps.back().texel - taps.front().texel == steps;
  if (isOnTexels) {
    copyTexels(source.pixel(taps.front().texel, static_cast<int>(row >> 8)), swapsRedAndBlue, to,
               taps.size());
  } else {
    sampleTexels(source, row, taps, swapsRedAndBlue, to);
  }
}

}  // namespace velicor::kernels
