#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "analysis/kernels/kernel_interface.h"
#include "analysis/kernels/native_kernels.h"
#include "analysis/kernels/rows/rows.h"

namespace velicor::kernels {

namespace {

// The opaque pixel of a counter: the tint at this brightness.
Packed tinted(const Tint& tint, float brightness) {
  return opaque(color::byteOf(tint.r * brightness), color::byteOf(tint.g * brightness),
                color::byteOf(tint.b * brightness));
}

// The processor's gains let a trace saturate at 501 samples or fewer.
constexpr std::size_t tableSize = 512;

// min(1, log2(1 + count) × gain) of every count up to the first that gives 1.
class Brightness {
 public:
  explicit Brightness(float gain) : gain_(gain) {
    while (last_ + 1 < values_.size() && values_[last_] < 1) {
      ++last_;
      values_[last_] = of(static_cast<std::uint32_t>(last_));
    }
  }

  // Whether all counts above have the brightness of the last one.
  bool isWhole() const { return values_[last_] >= 1; }
  std::uint32_t last() const { return static_cast<std::uint32_t>(last_); }
  float at(std::uint32_t count) const { return count <= last_ ? values_[count] : of(count); }

 private:
  float of(std::uint32_t count) const {
    return std::min(1.0F, std::log2(1.0F + static_cast<float>(count)) * gain_);
  }

  float gain_;
  std::array<float, tableSize> values_{};
  std::size_t last_ = 0;
};

// Turns rows of counters into rows of pixels of one tint.
class Trace {
 public:
  Trace(const Tint& tint, const Brightness& brightness) : tint_(tint), brightness_(brightness) {
    for (std::uint32_t count = 0; count <= brightness.last(); ++count)
      colors_[count] = tinted(tint, brightness.at(count));
  }

  void draw(const std::uint32_t* counters, std::size_t count, Packed* to) const {
    if (brightness_.isWhole()) return traceCounters(counters, count, colors_.data(), brightness_.last(), to);
    for (std::size_t i = 0; i < count; ++i)
      to[i] = tinted(tint_, brightness_.at(counters[i]));
  }

 private:
  Tint tint_;
  const Brightness& brightness_;
  std::array<Packed, tableSize> colors_{};
};

}  // namespace

void renderVectorscope(const gpu::NativeArguments& arguments, gpu::GridRange range) {
  const auto counters = arguments.array<const std::uint32_t>(0, planeCounters);
  const Brightness brightness(arguments.value<float>(1));
  const Trace trace(vectorscopeTint, brightness);
  const gpu::NativeImage& image = arguments.texture(0);
  const int width = std::min({range.width, image.width, vectorscopeSide});
  const int endRow = std::min({range.endRow, image.height, vectorscopeSide});
  std::array<Packed, scopeBins> bins{};
  std::array<Packed, vectorscopeSide> pixels{};
  int drawn = -1;
  for (int y = range.firstRow; y < endRow; ++y) {
    if (y / 2 != drawn) {
      drawn = y / 2;
      trace.draw(&counters[static_cast<std::size_t>(drawn) * scopeBins], scopeBins, bins.data());
      for (std::size_t i = 0; i < bins.size(); ++i)
        pixels[2 * i] = pixels[2 * i + 1] = bins[i];
    }
    std::memcpy(image.row(y), pixels.data(), gpu::bytesPerPixel * static_cast<std::size_t>(width));
  }
}

void renderParade(const gpu::NativeArguments& arguments, gpu::GridRange range) {
  const auto counters = arguments.array<const std::uint32_t>(0, 3 * planeCounters);
  const Brightness brightness(arguments.value<float>(1));
  const std::array<Trace, 3> traces{Trace(paradeTints[0], brightness), Trace(paradeTints[1], brightness),
                                    Trace(paradeTints[2], brightness)};
  const gpu::NativeImage& image = arguments.texture(0);
  const int width = std::min({range.width, image.width, paradeWidth});
  const int endRow = std::min({range.endRow, image.height, paradeHeight});
  std::array<Packed, paradeWidth> pixels{};
  pixels.fill(opaque(0, 0, 0));
  for (int y = range.firstRow; y < endRow; ++y) {
    const auto level = static_cast<std::size_t>(paradeHeight - 1 - y);
    for (std::size_t panel = 0; panel < traces.size(); ++panel) {
      traces[panel].draw(&counters[panel * planeCounters + level * scopeBins], scopeBins,
                         &pixels[panel * (scopeBins + paradeGap)]);
    }
    std::memcpy(image.row(y), pixels.data(), gpu::bytesPerPixel * static_cast<std::size_t>(width));
  }
}

}  // namespace velicor::kernels
