#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <span>

#include "platform/gpu/misuse.h"
#include "platform/gpu/types.h"

// How a function written in C++ takes part in a dispatch or a draw of the native device. A function gets a
// whole range of the grid at once and loops itself.
namespace velicor::gpu {

// A texture's pixels: rows `bytesPerRow` apart, row 0 at the top.
struct NativeImage {
  std::byte* bytes = nullptr;
  std::size_t bytesPerRow = 0;
  int width = 0;
  int height = 0;
  PixelFormat format = PixelFormat::bgra8Unorm;

  std::byte* row(int y) const { return bytes + bytesPerRow * static_cast<std::size_t>(y); }
  std::byte* pixel(int x, int y) const { return row(y) + bytesPerPixel * static_cast<std::size_t>(x); }
};

// What is bound, by index. Asking for an index that nothing was bound to, or for more bytes than were bound,
// is a mistake in the program and ends it.
class NativeArguments {
 public:
  const NativeImage& texture(int index) const {
    const auto& bound = textures.at(static_cast<std::size_t>(index));
    require(bound.has_value(), "a kernel reads a texture index that nothing is bound to");
    return *bound;
  }

  std::span<std::byte> buffer(int index) const { return buffers.at(static_cast<std::size_t>(index)); }

  // The buffer at the index as an array of at least `count` elements.
  template <typename T>
  std::span<T> array(int index, std::size_t count) const {
    const std::span<std::byte> bytes = buffer(index);
    require(bytes.size() >= count * sizeof(T), "a kernel reads a buffer that is too short or not bound");
    return {reinterpret_cast<T*>(bytes.data()), count};
  }

  // The first bytes of the buffer at the index, as one value.
  template <typename T>
  T value(int index) const {
    const std::span<std::byte> bytes = buffer(index);
    require(bytes.size() >= sizeof(T), "a kernel reads bytes that are too short or not bound");
    T result;
    std::memcpy(&result, bytes.data(), sizeof(T));
    return result;
  }

  std::array<std::optional<NativeImage>, maxTextureBindings> textures;
  std::array<std::span<std::byte>, maxBufferBindings> buffers;
};

// Threads (x, y) with 0 ≤ x < width and firstRow ≤ y < endRow. The grid is rounded up to whole threadgroups:
// the function leaves out what lies outside its picture.
struct GridRange {
  int width = 0;
  int firstRow = 0;
  int endRow = 0;
};

using NativeComputeFunction = void (*)(const NativeArguments&, GridRange);

// A compute function whose rows don't depend on each other: it may be called for several ranges of rows at
// once, on several threads.
struct NativeRowsFunction {
  NativeComputeFunction function;
};

// Position in clip space (−1…1, y up) and two values that are interpolated over the triangle.
struct NativeVertex {
  float x = 0;
  float y = 0;
  float u = 0;
  float v = 0;
};

using NativeVertexFunction = NativeVertex (*)(const NativeArguments&, int vertexIndex);

// Covered pixels xBegin ≤ x < xEnd of one row of the target. u and v are the interpolated values at the
// centre of the first pixel and grow by du and dv from pixel to pixel, v by dvDown to the row below.
struct FragmentSpan {
  NativeImage target;
  int y = 0;
  int xBegin = 0;
  int xEnd = 0;
  double u = 0;
  double v = 0;
  double du = 0;
  double dv = 0;
  double dvDown = 0;
};

// Writes its colours into the span's pixels; a pixel that it leaves alone keeps what was there. It may be
// called for different rows at once, on several threads.
using NativeFragmentFunction = void (*)(const NativeArguments&, const FragmentSpan&);

}  // namespace velicor::gpu
