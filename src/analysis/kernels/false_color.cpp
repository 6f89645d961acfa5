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

using PaletteEntries = std::span<const std::array<float, 4>>;

Packed opaque(const std::array<float, 4>& color) {
  return packed({byteOf(color[0]), byteOf(color[1]), byteOf(color[2]), 255});
}

Packed grey(std::int32_t value) {
  const auto byte = static_cast<std::uint8_t>(value);
  return packed({byte, byte, byte, 255});
}

std::array<float, 4> blend(const std::array<float, 4>& from, const std::array<float, 4>& to, float share) {
  std::array<float, 4> result;
  for (std::size_t i = 0; i < result.size(); ++i)
    result[i] = from[i] + (to[i] - from[i]) * share;
  return result;
}

std::int32_t heatIndexOfLevel(std::size_t level) {
  return static_cast<std::int32_t>(std::lround(Palette::heatLevels[level] * color::heatSteps));
}

// The colour of every step of the scale: linear between neighbouring entries, an entry's own at its level.
std::vector<Packed> heatTable(PaletteEntries heat) {
  std::vector<Packed> table(static_cast<std::size_t>(color::heatSteps) + 1);
  for (std::size_t k = 0; k + 1 < Palette::heatCount; ++k) {
    const std::int32_t begin = heatIndexOfLevel(k);
    const std::int32_t end = heatIndexOfLevel(k + 1);
    for (std::int32_t i = begin; i <= end; ++i) {
      const float share = static_cast<float>(i - begin) / static_cast<float>(end - begin);
      table[static_cast<std::size_t>(i)] = opaque(blend(heat[k], heat[k + 1], share));
    }
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
    const std::array<Packed, 3> zones{opaque(palette[0]), opaque(palette[1]), opaque(palette[2])};
    paint(arguments, range, [&](color::Pixel pixel) {
      const std::int32_t luma = color::luma(pixel);
      const color::SkinZone zone = color::skinZone(pixel, luma);
      return zone == color::SkinZone::notSkin ? grey(color::greyOf(luma))
                                              : zones[static_cast<std::size_t>(zone)];
    });
  } else {
    const std::vector<Packed> table = heatTable(palette.subspan(3));
    paint(arguments, range, [&](color::Pixel pixel) {
      return table[static_cast<std::size_t>(color::heatIndex(color::luma(pixel)))];
    });
  }
}

}  // namespace velicor::kernels
