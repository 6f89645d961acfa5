#include <algorithm>
#include <memory>
#include <span>

#include "analysis/kernels/kernel_interface.h"
#include "analysis/kernels/native_kernels.h"
#include "analysis/kernels/rows/rows.h"
#include "palette/palette.h"

namespace velicor::kernels {

namespace {

constexpr std::uint32_t skinMode = 1;

using Color = std::array<float, 4>;

constexpr bool heatScaleIsThePalettes() {
  for (std::size_t k = 0; k + 1 < Palette::heatCount; ++k) {
    const int steps = color::heatLevels[k + 1] - color::heatLevels[k];
    if (color::heatStepShares[k] != 1.0F / static_cast<float>(steps)) return false;
    if (color::heatLevels[k] / double{color::heatSteps} != Palette::heatLevels[k]) return false;
  }
  return color::heatLevels[Palette::heatCount - 1] == color::heatSteps &&
         Palette::heatCount == color::heatColors;
}
static_assert(heatScaleIsThePalettes());

Packed packedColor(const Color& color) {
  return opaque(color::byteOf(color[0]), color::byteOf(color[1]), color::byteOf(color[2]));
}

// The colours of the scale for a palette's entries: linear between neighbouring ones, an entry's own at its
// level. Palettes change far less often than frames, so that each thread keeps the last one's.
class HeatScale {
 public:
  const HeatColors& of(std::span<const Color, Palette::heatCount> entries) {
    if (!isBuilt_ || !std::ranges::equal(entries, entries_)) {
      std::ranges::copy(entries, entries_.begin());
      build();
      isBuilt_ = true;
    }
    return colors_;
  }

 private:
  void build() {
    for (std::size_t i = 0; i < colors_.size(); ++i) {
      const color::HeatPlace place = color::heatPlace(static_cast<int>(i));
      const auto entry = static_cast<std::size_t>(place.entry);
      const Color& below = entries_[entry];
      const Color& above = entries_[std::min(entry + 1, Palette::heatCount - 1)];
      const auto byte = [&](std::size_t channel) {
        return color::heatByte(below[channel], above[channel], place.share);
      };
      colors_[i] = opaque(byte(0), byte(1), byte(2));
    }
  }

  bool isBuilt_ = false;
  std::array<Color, Palette::heatCount> entries_{};
  HeatColors colors_{};
};

// Calls paintRow(source row, preview row, pixels) for every row of the range.
template <typename PaintRow>
void paint(const gpu::NativeArguments& arguments, gpu::GridRange range, PaintRow paintRow) {
  const gpu::NativeImage& source = arguments.texture(0);
  const gpu::NativeImage& preview = arguments.texture(1);
  const auto offset = arguments.value<Offset>(1);
  const int left = static_cast<int>(offset.x);
  const int top = static_cast<int>(offset.y);
  const int width = std::min({range.width, preview.width, source.width - left});
  const int endRow = std::min({range.endRow, preview.height, source.height - top});
  if (width <= 0) return;
  for (int y = range.firstRow; y < endRow; ++y)
    paintRow(SourceRow{source.pixel(left, y + top), source.format}, preview.row(y),
             static_cast<std::size_t>(width));
}

}  // namespace

void falseColor(const gpu::NativeArguments& arguments, gpu::GridRange range) {
  const auto palette = arguments.array<const Color>(2, Palette::colorCount);
  if (arguments.value<std::uint32_t>(0) == skinMode) {
    const ZoneColors zones{packedColor(palette[0]), packedColor(palette[1]), packedColor(palette[2])};
    paint(arguments, range,
          [&](SourceRow from, std::byte* to, std::size_t count) { paintSkin(from, to, count, zones); });
  } else {
    thread_local const auto scale = std::make_unique<HeatScale>();
    const HeatColors& heat = scale->of(palette.subspan<3, Palette::heatCount>());
    paint(arguments, range,
          [&](SourceRow from, std::byte* to, std::size_t count) { paintHeat(from, to, count, heat); });
  }
}

}  // namespace velicor::kernels
