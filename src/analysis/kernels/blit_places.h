#pragma once

#include <cstdint>
#include <vector>

#include "platform/gpu/native/native_kernel.h"

// Where the pixels of a drawn texture's rows lie in it.
namespace velicor::kernels {

// In 1/256 of a texel, from the first one's center. Texel centers lie at (i + 0.5) / count. Rounding makes an
// exact hit of what should be one. Moved up by a few texels, truncation rounds the same way on both sides of
// zero; what lies further down is outside.
inline std::int64_t position(double coordinate, int count) {
  constexpr std::int64_t texels = 4;
  // NOLINTNEXTLINE(bugprone-incorrect-roundings): as the other devices round
  return static_cast<std::int64_t>((coordinate * count - 0.5 + texels) * 256 + 0.5) - texels * 256;
}

// Decided on the rounded place, so that an edge right on a pixel's center falls to the same side everywhere.
inline bool isInside(std::int64_t position, int count) {
  return position >= -128 && position < std::int64_t{256} * count - 128;
}

// The pixels of a span whose horizontal coordinate lies inside the texture.
struct InnerSpan {
  int begin;
  int end;
};

InnerSpan innerSpan(const gpu::FragmentSpan& span, int width);

// One place for each pixel of a span's inner part. The rows of a quad have all the same, so that each thread
// keeps the last ones.
template <typename Place>
class RowPlaces {
 public:
  // placeAt(u) is asked for what is not known yet.
  template <typename PlaceAt>
  const std::vector<Place>& of(const gpu::FragmentSpan& span, InnerSpan inner, int width,
                               const PlaceAt& placeAt) {
    const Key key{span.u, span.du, inner.begin - span.xBegin, inner.end - span.xBegin, width};
    if (key != key_) {
      key_ = key;
      places_.clear();
      for (int x = inner.begin; x < inner.end; ++x)
        places_.push_back(placeAt(span.u + span.du * (x - span.xBegin)));
    }
    return places_;
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
  std::vector<Place> places_;
};

}  // namespace velicor::kernels
