#include <algorithm>
#include <array>
#include <vector>

#include "analysis/kernels/image_access.h"
#include "analysis/kernels/kernel_interface.h"
#include "analysis/kernels/native_kernels.h"
#include "palette/palette.h"

namespace velicor::kernels {

namespace {

constexpr std::uint32_t skinMode = 1;

using Color = std::array<float, 4>;
using PaletteEntries = std::span<const Color>;

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

// The colour of every step of the scale: linear between neighbouring entries, an entry's own at its level.
std::vector<Packed> heatTable(PaletteEntries heat) {
  std::vector<Packed> table;
  table.reserve(color::heatSteps + 1);
  for (int i = 0; i <= color::heatSteps; ++i) {
    const color::HeatPlace place = color::heatPlace(i);
    const auto entry = static_cast<std::size_t>(place.entry);
    const Color& below = heat[entry];
    const Color& above = heat[std::min(entry + 1, Palette::heatCount - 1)];
    const auto byte = [&](std::size_t channel) {
      return color::heatByte(below[channel], above[channel], place.share);
    };
    table.push_back(opaque(byte(0), byte(1), byte(2)));
  }
  return table;
}

// Writes colorOf(source pixel) to every pixel of the range.
template <typename ColorOf>
void paint(const gpu::NativeArguments& arguments, gpu::GridRange range, ColorOf colorOf) {
  const gpu::NativeImage& source = arguments.texture(0);
  const gpu::NativeImage& preview = arguments.texture(1);
  const auto offset = arguments.value<Offset>(1);
  const int left = static_cast<int>(offset.x);
  const int top = static_cast<int>(offset.y);
  const int width = std::min({range.width, preview.width, source.width - left});
  const int endRow = std::min({range.endRow, preview.height, source.height - top});
  const ChannelOrder order = orderOf(source.format);
  for (int y = range.firstRow; y < endRow; ++y) {
    const std::byte* from = source.pixel(left, y + top);
    std::byte* to = preview.row(y);
    for (int x = 0; x < width; ++x, from += gpu::bytesPerPixel, to += gpu::bytesPerPixel) {
      store(to, colorOf(pixelAt(from, order)));
    }
  }
}

}  // namespace

void falseColor(const gpu::NativeArguments& arguments, gpu::GridRange range) {
  const auto palette = arguments.array<const std::array<float, 4>>(2, Palette::colorCount);
  if (arguments.value<std::uint32_t>(0) == skinMode) {
    const std::array<Packed, 3> zones{packedColor(palette[0]), packedColor(palette[1]),
                                      packedColor(palette[2])};
    paint(arguments, range, [&](color::Pixel pixel) {
      const int luma = color::lumaOf(pixel);
      const int zone = color::skinZone(pixel, luma);
      const int grey = color::greyOf(luma);
      return zone == color::zoneNotSkin ? opaque(grey, grey, grey) : zones[static_cast<std::size_t>(zone)];
    });
  } else {
    const std::vector<Packed> table = heatTable(palette.subspan(3));
    paint(arguments, range, [&](color::Pixel pixel) {
      return table[static_cast<std::size_t>(color::heatIndex(color::lumaOf(pixel)))];
    });
  }
}

}  // namespace velicor::kernels
