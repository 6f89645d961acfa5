#include <algorithm>
#include <cstring>
#include <vector>

#include "analysis/kernels/kernel_interface.h"
#include "analysis/kernels/native_kernels.h"
#include "analysis/kernels/rows/rows.h"
#include "platform/gpu/native/scratch.h"

namespace velicor::kernels {

namespace {

// Texel centres lie at (i + 0.5) / count. Rounding to 1/256 makes an exact hit of what should be one. Moved
// up by a few texels, truncation rounds the same way on both sides of zero; what lies further down is
// outside.
std::int64_t position(double coordinate, int count) {
  constexpr std::int64_t texels = 4;
  // NOLINTNEXTLINE(bugprone-incorrect-roundings): as the other devices round
  return static_cast<std::int64_t>((coordinate * count - 0.5 + texels) * 256 + 0.5) - texels * 256;
}

// Decided on the rounded place, so that an edge right on a pixel's centre falls to the same side everywhere.
bool isInside(std::int64_t position, int count) {
  return position >= -128 && position < std::int64_t{256} * count - 128;
}

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

// Where the pixels of a span lie between the texels. The rows of a quad have all the same, so that each
// thread keeps the last ones.
class Taps {
 public:
  const std::vector<Tap>& of(const gpu::FragmentSpan& span, InnerSpan inner, int width) {
    const Key key{span.u, span.du, inner.begin - span.xBegin, inner.end - span.xBegin, width};
    if (key != key_) {
      key_ = key;
      taps_.clear();
      for (int x = inner.begin; x < inner.end; ++x) {
        const std::int64_t place = position(span.u + span.du * (x - span.xBegin), width);
        taps_.push_back({static_cast<std::int32_t>(place >> 8), static_cast<std::uint32_t>(place & 255)});
      }
    }
    return taps_;
  }

 private:
  struct Key {
    double u;
    double du;
    int begin;
    int end;
    int width;
    bool operator==(const Key&) const = default;
  };
  Key key_{};
  std::vector<Tap> taps_;
};

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

}  // namespace

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
  thread_local Taps lastTaps;
  const std::vector<Tap>& taps = lastTaps.of(span, inner, source.width);
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
