#include <algorithm>
#include <span>

#include "analysis/kernels/kernel_interface.h"
#include "analysis/kernels/native_kernels.h"
#include "analysis/kernels/rows/rows.h"
#include "platform/gpu/native/scratch.h"

namespace velicor::kernels {

namespace {

// A row's samples: their pixels as they lie in memory, and where they are counted.
struct Samples {
  std::span<Packed> pixels;
  std::span<std::uint32_t> chromaBins;
  std::span<std::uint32_t> columns;  // of the parade; the same for all rows
  gpu::PixelFormat format;

  void collect(const std::byte* row, std::size_t stride) {
    const std::size_t step = gpu::bytesPerPixel * stride;
    for (Packed& pixel : pixels) {
      std::memcpy(&pixel, row, sizeof pixel);
      row += step;
    }
    findChromaBins({std::as_bytes(pixels).data(), format}, chromaBins.data(), pixels.size());
  }
};

// Plain areas send one sample after the other to the same counters, and each addition then waits for the one
// before. So a row's two halves are counted by turns: they never meet in the parade, and have a vectorscope
// of their own each.
class Counters {
 public:
  Counters(std::span<std::uint32_t> vectorscope, std::span<std::uint32_t> parade,
           std::span<std::uint32_t> secondVectorscope)
      : vectorscope_(vectorscope), second_(secondVectorscope), parade_(parade) {
    std::ranges::fill(second_, 0U);
  }

  void add(const Samples& samples) {
    const std::size_t half = samples.pixels.size() / 2;
    const ChannelOrder order = orderOf(samples.format);
    for (std::size_t i = 0; i < half; ++i) {
      add(samples, i, order, vectorscope_);
      add(samples, half + i, order, second_);
    }
    if (2 * half < samples.pixels.size()) add(samples, 2 * half, order, vectorscope_);
  }

  void merge() { addCounters(second_.data(), vectorscope_.data(), planeCounters); }

 private:
  void add(const Samples& samples, std::size_t i, ChannelOrder order, std::span<std::uint32_t> vectorscope) {
    const auto* pixel = reinterpret_cast<const std::uint8_t*>(&samples.pixels[i]);
    std::uint32_t* column = &parade_[samples.columns[i]];
    ++vectorscope[samples.chromaBins[i]];
    ++column[std::size_t{pixel[order.red]} * scopeBins];
    ++column[planeCounters + std::size_t{pixel[1]} * scopeBins];
    ++column[2 * planeCounters + std::size_t{pixel[order.blue]} * scopeBins];
  }

  std::span<std::uint32_t> vectorscope_;
  std::span<std::uint32_t> second_;
  std::span<std::uint32_t> parade_;
};

}  // namespace

void accumulateScopes(const gpu::NativeArguments& arguments, gpu::GridRange range) {
  const gpu::NativeImage& source = arguments.texture(0);
  const auto vectorscope = arguments.array<std::uint32_t>(0, planeCounters);
  const auto parade = arguments.array<std::uint32_t>(1, 3 * planeCounters);
  const auto area = arguments.value<Rectangle>(2);
  const std::uint32_t stride = std::max(arguments.value<std::uint32_t>(3), 1U);
  if (area.x >= static_cast<std::uint32_t>(source.width) ||
      area.y >= static_cast<std::uint32_t>(source.height)) {
    return;
  }
  const std::uint32_t width = std::min(area.width, static_cast<std::uint32_t>(source.width) - area.x);
  const std::uint32_t height = std::min(area.height, static_cast<std::uint32_t>(source.height) - area.y);
  const std::size_t count = std::min((width + stride - 1) / stride, static_cast<std::uint32_t>(range.width));

  const auto memory = gpu::scratch<std::uint32_t>(planeCounters + 3 * count);
  Samples samples{memory.subspan(planeCounters, count), memory.subspan(planeCounters + count, count),
                  memory.subspan(planeCounters + 2 * count, count), source.format};
  for (std::size_t i = 0; i < count; ++i)
    samples.columns[i] = static_cast<std::uint32_t>(i) * stride * scopeBins / area.width;
  Counters counters(vectorscope, parade, memory.first(planeCounters));
  for (int j = range.firstRow; j < range.endRow; ++j) {
    const std::uint32_t y = static_cast<std::uint32_t>(j) * stride;
    if (y >= height) break;
    samples.collect(source.pixel(static_cast<int>(area.x), static_cast<int>(area.y + y)), stride);
    counters.add(samples);
  }
  counters.merge();
}

}  // namespace velicor::kernels
