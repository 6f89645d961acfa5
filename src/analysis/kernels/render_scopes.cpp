#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "analysis/kernels/image_access.h"
#include "analysis/kernels/kernel_interface.h"
#include "analysis/kernels/native_kernels.h"

namespace velicor::kernels {

namespace {

// The opaque pixel of a counter: the tint at the brightness min(1, log2(1 + count) × gain). Frames have few
// different small counts and very many bins, so that the smaller ones are worked out once.
class TracePixels {
 public:
  TracePixels(const Tint& tint, float gain) : tint_(tint), gain_(gain) {
    for (std::uint32_t count = 0; count < tableSize; ++count)
      table_.push_back(compute(count));
  }

  Packed operator()(std::uint32_t count) const { return count < tableSize ? table_[count] : compute(count); }

 private:
  // The gains let a trace saturate at 500 samples or fewer.
  static constexpr std::uint32_t tableSize = 512;

  Packed compute(std::uint32_t count) const {
    const float brightness = std::min(1.0F, std::log2(1.0F + static_cast<float>(count)) * gain_);
    return opaque(color::byteOf(tint_.r * brightness), color::byteOf(tint_.g * brightness),
                  color::byteOf(tint_.b * brightness));
  }

  Tint tint_;
  float gain_;
  std::vector<Packed> table_;
};

// The panel that a column of the parade image belongs to, and the bin column within it; no bin in a gap.
struct PanelColumn {
  std::size_t panel;
  int column;
  bool isGap() const { return column >= scopeBins; }
};

PanelColumn panelColumn(int x) {
  return {static_cast<std::size_t>(x / (scopeBins + paradeGap)), x % (scopeBins + paradeGap)};
}

}  // namespace

void renderVectorscope(const gpu::NativeArguments& arguments, gpu::GridRange range) {
  const auto counters = arguments.array<const std::uint32_t>(0, planeCounters);
  const TracePixels trace(vectorscopeTint, arguments.value<float>(1));
  const gpu::NativeImage& image = arguments.texture(0);
  const int width = std::min({range.width, image.width, vectorscopeSide});
  const int endRow = std::min({range.endRow, image.height, vectorscopeSide});
  for (int y = range.firstRow; y < endRow; ++y) {
    const std::uint32_t* bins = &counters[static_cast<std::size_t>(y / 2) * scopeBins];
    for (int x = 0; x < width; ++x)
      store(image.pixel(x, y), trace(bins[x / 2]));
  }
}

void renderParade(const gpu::NativeArguments& arguments, gpu::GridRange range) {
  const auto counters = arguments.array<const std::uint32_t>(0, 3 * planeCounters);
  const auto gain = arguments.value<float>(1);
  const std::array<TracePixels, 3> traces{TracePixels(paradeTints[0], gain),
                                          TracePixels(paradeTints[1], gain),
                                          TracePixels(paradeTints[2], gain)};
  const Packed black = opaque(0, 0, 0);
  const gpu::NativeImage& image = arguments.texture(0);
  const int width = std::min({range.width, image.width, paradeWidth});
  const int endRow = std::min({range.endRow, image.height, paradeHeight});
  for (int y = range.firstRow; y < endRow; ++y) {
    const auto level = static_cast<std::size_t>(paradeHeight - 1 - y);
    for (int x = 0; x < width; ++x) {
      const PanelColumn at = panelColumn(x);
      const std::size_t bin =
          at.panel * planeCounters + level * scopeBins + static_cast<std::size_t>(at.column);
      store(image.pixel(x, y), at.isGap() ? black : traces[at.panel](counters[bin]));
    }
  }
}

}  // namespace velicor::kernels
