#include <algorithm>
#include <span>

#include "analysis/kernels/image_access.h"
#include "analysis/kernels/kernel_interface.h"
#include "analysis/kernels/native_kernels.h"

namespace velicor::kernels {

namespace {

struct Counters {
  std::span<std::uint32_t> vectorscope;
  std::span<std::uint32_t> parade;

  // The device runs one dispatch on one thread, so that plain additions count every sample.
  void add(color::Pixel pixel, std::size_t column) {
    const std::int32_t luma = color::lumaOf(pixel);
    const auto row = static_cast<std::size_t>(color::crBin(pixel, luma));
    ++vectorscope[row * scopeBins + static_cast<std::size_t>(color::cbBin(pixel, luma))];
    ++parade[static_cast<std::size_t>(pixel.r) * scopeBins + column];
    ++parade[planeCounters + static_cast<std::size_t>(pixel.g) * scopeBins + column];
    ++parade[2 * planeCounters + static_cast<std::size_t>(pixel.b) * scopeBins + column];
  }
};

}  // namespace

void accumulateScopes(const gpu::NativeArguments& arguments, gpu::GridRange range) {
  const gpu::NativeImage& source = arguments.texture(0);
  Counters counters{arguments.array<std::uint32_t>(0, planeCounters),
                    arguments.array<std::uint32_t>(1, 3 * planeCounters)};
  const auto area = arguments.value<Rectangle>(2);
  const std::uint32_t stride = std::max(arguments.value<std::uint32_t>(3), 1U);
  if (area.x >= static_cast<std::uint32_t>(source.width) ||
      area.y >= static_cast<std::uint32_t>(source.height)) {
    return;
  }
  const std::uint32_t width = std::min(area.width, static_cast<std::uint32_t>(source.width) - area.x);
  const std::uint32_t height = std::min(area.height, static_cast<std::uint32_t>(source.height) - area.y);
  const ChannelOrder order = orderOf(source.format);
  for (int j = range.firstRow; j < range.endRow; ++j) {
    const std::uint32_t y = static_cast<std::uint32_t>(j) * stride;
    if (y >= height) return;
    const std::byte* row = source.pixel(static_cast<int>(area.x), static_cast<int>(area.y + y));
    for (int i = 0; i < range.width; ++i) {
      const std::uint32_t x = static_cast<std::uint32_t>(i) * stride;
      if (x >= width) break;
      counters.add(pixelAt(row + gpu::bytesPerPixel * x, order), std::size_t{x * scopeBins / area.width});
    }
  }
}

}  // namespace velicor::kernels
