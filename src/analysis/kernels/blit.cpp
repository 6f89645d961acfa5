#include <algorithm>
#include <cstring>
#include <utility>

#include "analysis/kernels/image_access.h"
#include "analysis/kernels/kernel_interface.h"
#include "analysis/kernels/native_kernels.h"

namespace velicor::kernels {

namespace {

// A place between texels along one axis, in 1/256 of a texel: the two neighbours, held within the texture,
// and the weight of the second.
struct Tap {
  int first;
  int second;
  std::uint32_t weight;
};

// Texel centres lie at (i + 0.5) / count. Rounding to 1/256 makes an exact hit of what should be one. Moved
// up by a few texels, truncation rounds the same way on both sides of zero; what lies further down is
// outside.
std::int64_t position(double coordinate, int count) {
  constexpr std::int64_t texels = 4;
  return static_cast<std::int64_t>((coordinate * count - 0.5 + texels) * 256 + 0.5) - texels * 256;
}

Tap tapAt(std::int64_t position, int count) {
  const auto texel = static_cast<int>(position >> 8);
  return {std::clamp(texel, 0, count - 1), std::clamp(texel + 1, 0, count - 1),
          static_cast<std::uint32_t>(position & 255)};
}

// Decided on the rounded place, so that an edge right on a pixel's centre falls to the same side everywhere.
bool isInside(std::int64_t position, int count) {
  return position >= -128 && position < std::int64_t{256} * count - 128;
}

// A pixel's four bytes in four lanes of 16 bits.
using Lanes = std::uint64_t;

Lanes lanesOf(const std::byte* pixel) {
  Packed bytes;
  std::memcpy(&bytes, pixel, sizeof bytes);
  const Lanes pairs = (bytes | Lanes{bytes} << 16) & 0x0000FFFF0000FFFF;
  return (pairs | pairs << 8) & 0x00FF00FF00FF00FF;
}

// a × (256 − weight) + b × weight in every lane: 255 × 256 at most, so that no lane overflows.
Lanes mix(Lanes a, Lanes b, std::uint32_t weight) { return a * (256 - weight) + b * weight; }

// The same over two mixed rows, back to bytes and rounded to the nearest. Every other lane at a time, because
// the sums need 24 bits.
Packed mixRows(Lanes upper, Lanes lower, std::uint32_t weight) {
  constexpr Lanes everyOther = 0x0000FFFF0000FFFF;
  constexpr Lanes half = 0x0000800000008000;
  const Lanes even = (mix(upper & everyOther, lower & everyOther, weight) + half) >> 16;
  const Lanes odd = (mix(upper >> 16 & everyOther, lower >> 16 & everyOther, weight) + half) >> 16;
  return static_cast<Packed>((even & 255) | (odd & 255) << 8 | (even >> 32) << 16 | (odd >> 32) << 24);
}

// One texture's pixels on their way into one row of the target.
class RowSampler {
 public:
  RowSampler(const gpu::NativeImage& source, const gpu::NativeImage& target, double v)
      : tap_(tapAt(position(v, source.height), source.height)),
        upper_(source.row(tap_.first)),
        lower_(source.row(tap_.second)),
        swaps_(source.format != target.format) {}

  bool isOnRow() const { return tap_.weight == 0; }

  // Bilinear, rounded to the nearest once.
  void sample(Tap x, std::byte* to) const {
    const Lanes top = mix(lanesOf(texel(upper_, x.first)), lanesOf(texel(upper_, x.second)), x.weight);
    const Lanes bottom = mix(lanesOf(texel(lower_, x.first)), lanesOf(texel(lower_, x.second)), x.weight);
    store(to, mixRows(top, bottom, tap_.weight));
    if (swaps_) std::swap(to[0], to[2]);
  }

  // Texels that fall on pixels one by one.
  void copy(int firstTexel, int count, std::byte* to) const {
    const std::byte* from = texel(upper_, firstTexel);
    if (!swaps_) {
      std::memcpy(to, from, gpu::bytesPerPixel * static_cast<std::size_t>(count));
      return;
    }
    for (int i = 0; i < count; ++i, from += gpu::bytesPerPixel, to += gpu::bytesPerPixel) {
      const std::byte pixel[gpu::bytesPerPixel] = {from[2], from[1], from[0], from[3]};
      std::memcpy(to, pixel, sizeof pixel);
    }
  }

 private:
  static const std::byte* texel(const std::byte* row, int x) {
    return row + gpu::bytesPerPixel * static_cast<std::size_t>(x);
  }

  Tap tap_;
  const std::byte* upper_;
  const std::byte* lower_;
  bool swaps_;
};

// The pixels of a span whose horizontal coordinate lies inside the texture.
struct InnerSpan {
  int begin;
  int end;
};

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

}  // namespace

gpu::NativeVertex blitVertex(const gpu::NativeArguments& arguments, int vertexIndex) {
  const auto scale = arguments.value<Scale>(0);
  const float x = vertexIndex == 1 ? blitFar : blitNear;
  const float y = vertexIndex == 2 ? blitFar : blitNear;
  return {x * scale.x, y * scale.y, (x + 1) * 0.5F, (1 - y) * 0.5F};
}

void blitFragment(const gpu::NativeArguments& arguments, const gpu::FragmentSpan& span) {
  const gpu::NativeImage& source = arguments.texture(0);
  if (!isInside(position(span.v, source.height), source.height)) return;
  const RowSampler sampler(source, span.target, span.v);
  const auto [begin, end] = innerSpan(span, source.width);
  if (begin >= end) return;
  const auto positionAt = [&](int x) { return position(span.u + span.du * (x - span.xBegin), source.width); };
  std::byte* to = span.target.pixel(begin, span.y);
  const std::int64_t first = positionAt(begin);
  const std::int64_t last = positionAt(end - 1);
  if (sampler.isOnRow() && (first & 255) == 0 && last - first == std::int64_t{256} * (end - 1 - begin)) {
    sampler.copy(static_cast<int>(first >> 8), end - begin, to);
    return;
  }
  for (int x = begin; x < end; ++x, to += gpu::bytesPerPixel)
    sampler.sample(tapAt(positionAt(x), source.width), to);
}

}  // namespace velicor::kernels
