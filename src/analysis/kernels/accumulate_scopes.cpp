#include <algorithm>
#include <span>

#include "analysis/kernels/kernel_interface.h"
#include "analysis/kernels/native_kernels.h"
#include "analysis/kernels/rows/rows.h"
#include "platform/gpu/native/scratch.h"

namespace velicor::kernels {

namespace {

// The parade is counted a few columns at a time, in a table of planes of levels of these columns that stays
// near the processor whatever the picture. The whole parade does not.
constexpr std::size_t bandColumns = 32;
constexpr std::size_t bandPlane = scopeBins * bandColumns;

// The samples of the analysed area: every `stride`-th pixel of every `stride`-th row.
struct Samples {
  const std::byte* bytes;
  std::size_t bytesPerRow;  // from one sampled row to the next
  std::size_t stride;
  std::size_t width;
  std::size_t height;
  gpu::PixelFormat format;

  std::size_t step() const { return gpu::bytesPerPixel * stride; }
  const std::byte* at(std::size_t x, std::size_t y) const { return bytes + bytesPerRow * y + step() * x; }
};

// Scratch memory for all samples of a row.
struct RowMemory {
  std::span<Packed> pixels;
  std::span<std::uint32_t> chromaBins;
  std::span<std::uint32_t> columns;  // of the parade; the same for all rows
};

// Consecutive samples of a row: their pixels and where they are counted.
struct Piece {
  const std::byte* pixels;
  const std::uint32_t* chromaBins;
  const std::uint32_t* columns;
  std::size_t count;
};

// The processor fetches ahead within a row, not into another one.
void prefetch(const std::byte* from, std::size_t length) {
  constexpr std::size_t cacheLine = 64;
  for (std::size_t i = 0; i < length; i += cacheLine)
    __builtin_prefetch(from + i);
}

const std::byte* gathered(const std::byte* from, std::size_t step, std::span<Packed> to) {
  for (Packed& pixel : to) {
    std::memcpy(&pixel, from, sizeof pixel);
    from += step;
  }
  return std::as_bytes(to).data();
}

class Band {
 public:
  Band(std::span<std::uint32_t> table, std::span<std::uint32_t> vectorscope, gpu::PixelFormat format)
      : table_(table), vectorscope_(vectorscope), order_(orderOf(format)) {
    std::ranges::fill(table_, 0U);
  }

  // Plain areas send one sample after the other to the same counters, and each addition then waits for the
  // one before. So the two halves are counted by turns.
  void add(const Piece& piece) {
    const std::size_t half = piece.count / 2;
    for (std::size_t i = 0; i < half; ++i) {
      add(piece, i);
      add(piece, half + i);
    }
    if (2 * half < piece.count) add(piece, 2 * half);
  }

  void moveTo(std::span<std::uint32_t> parade, std::size_t firstColumn) {
    moveCounters(table_.data(), bandColumns, &parade[firstColumn], scopeBins, 3UL * scopeBins);
  }

 private:
  void add(const Piece& piece, std::size_t i) {
    const std::byte* pixel = piece.pixels + gpu::bytesPerPixel * i;
    std::uint32_t* column = &table_[piece.columns[i] % bandColumns];
    ++vectorscope_[piece.chromaBins[i]];
    ++column[std::to_integer<std::size_t>(pixel[order_.red]) * bandColumns];
    ++column[bandPlane + std::to_integer<std::size_t>(pixel[1]) * bandColumns];
    ++column[2 * bandPlane + std::to_integer<std::size_t>(pixel[order_.blue]) * bandColumns];
  }

  std::span<std::uint32_t> table_;
  std::span<std::uint32_t> vectorscope_;
  ChannelOrder order_;
};

// Counts the samples begin … end of every row.
void countBand(const Samples& samples, const RowMemory& memory, std::size_t begin, std::size_t end,
               Band& band) {
  const std::size_t count = end - begin;
  const std::size_t length = samples.step() * (count - 1) + gpu::bytesPerPixel;
  for (std::size_t y = 0; y < samples.height; ++y) {
    const std::byte* from = samples.at(begin, y);
    if (y + 1 < samples.height) prefetch(samples.at(begin, y + 1), length);
    const std::byte* pixels =
        samples.stride == 1 ? from : gathered(from, samples.step(), memory.pixels.first(count));
    findChromaBins({pixels, samples.format}, memory.chromaBins.data(), count);
    band.add({pixels, memory.chromaBins.data(), &memory.columns[begin], count});
  }
}

void count(const Samples& samples, const RowMemory& memory, Band& band, std::span<std::uint32_t> parade) {
  std::size_t begin = 0;
  for (std::size_t firstColumn = 0; firstColumn < scopeBins; firstColumn += bandColumns) {
    std::size_t end = begin;
    while (end < samples.width && memory.columns[end] < firstColumn + bandColumns)
      ++end;
    if (begin == end) continue;
    countBand(samples, memory, begin, end, band);
    band.moveTo(parade, firstColumn);
    begin = end;
  }
}

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
  const auto samplesAlong = [stride](std::uint32_t length, int threads) {
    return std::min((length + stride - 1) / stride, static_cast<std::uint32_t>(threads));
  };
  const auto firstRow = static_cast<std::uint32_t>(range.firstRow);
  const std::uint32_t columns = samplesAlong(width, range.width), endRow = samplesAlong(height, range.endRow);
  if (firstRow >= endRow) return;
  const Samples samples{source.pixel(static_cast<int>(area.x), static_cast<int>(area.y + firstRow * stride)),
                        source.bytesPerRow * stride,
                        stride,
                        columns,
                        endRow - firstRow,
                        source.format};

  const auto memory = gpu::scratch<std::uint32_t>(3 * bandPlane + 3 * samples.width);
  const auto row = memory.subspan(3 * bandPlane);
  const RowMemory rowMemory{row.first(samples.width), row.subspan(samples.width, samples.width),
                            row.subspan(2 * samples.width)};
  for (std::uint32_t i = 0; i < columns; ++i)
    rowMemory.columns[i] = i * stride * scopeBins / area.width;
  Band band(memory.first(3 * bandPlane), vectorscope, source.format);
  count(samples, rowMemory, band, parade);
}

}  // namespace velicor::kernels
