#include <algorithm>
#include <utility>

#include "analysis/kernels/rows/rows.h"

namespace velicor::kernels::plain {

namespace {

template <typename ColorOf>
void paint(SourceRow from, std::byte* to, std::size_t count, ColorOf colorOf) {
  const ChannelOrder order = orderOf(from.format);
  for (std::size_t i = 0; i < count; ++i)
    store(to + gpu::bytesPerPixel * i, colorOf(pixelAt(from.pixels + gpu::bytesPerPixel * i, order)));
}

}  // namespace

void paintSkin(SourceRow from, std::byte* to, std::size_t count, const ZoneColors& zones) {
  paint(from, to, count, [&](color::Pixel pixel) {
    const int luma = color::lumaOf(pixel);
    const int zone = color::skinZone(pixel, luma);
    const int grey = color::greyOf(luma);
    return zone == color::zoneNotSkin ? opaque(grey, grey, grey) : zones[static_cast<std::size_t>(zone)];
  });
}

void paintHeat(SourceRow from, std::byte* to, std::size_t count, const HeatColors& heat) {
  paint(from, to, count, [&](color::Pixel pixel) {
    return heat[static_cast<std::size_t>(color::heatIndex(color::lumaOf(pixel)))];
  });
}

void findChromaBins(SourceRow from, std::uint32_t* bins, std::size_t count) {
  const ChannelOrder order = orderOf(from.format);
  for (std::size_t i = 0; i < count; ++i) {
    const color::Pixel pixel = pixelAt(from.pixels + gpu::bytesPerPixel * i, order);
    const int luma = color::lumaOf(pixel);
    bins[i] =
        static_cast<std::uint32_t>(color::crBin(pixel, luma) * color::chromaBins + color::cbBin(pixel, luma));
  }
}

void traceCounters(const std::uint32_t* counters, std::size_t count, const Packed* colors, std::uint32_t last,
                   Packed* to) {
  for (std::size_t i = 0; i < count; ++i)
    to[i] = colors[std::min(counters[i], last)];
}

void moveCounters(std::uint32_t* from, std::size_t columns, std::uint32_t* to, std::size_t pitch,
                  std::size_t rows) {
  for (std::size_t y = 0; y < rows; ++y, from += columns, to += pitch) {
    for (std::size_t x = 0; x < columns; ++x)
      to[x] += std::exchange(from[x], 0U);
  }
}

void copySwapped(const std::byte* from, std::byte* to, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i, from += gpu::bytesPerPixel, to += gpu::bytesPerPixel) {
    const std::byte pixel[gpu::bytesPerPixel] = {from[2], from[1], from[0], from[3]};
    std::memcpy(to, pixel, sizeof pixel);
  }
}

void mixRows(const std::byte* upper, const std::byte* lower, std::uint32_t weight, MixedTexel* to,
             std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t channel = 0; channel < to[i].size(); ++channel) {
      const auto at = gpu::bytesPerPixel * i + channel;
      const std::uint32_t mixed = std::to_integer<std::uint32_t>(upper[at]) * (256 - weight) +
                                  std::to_integer<std::uint32_t>(lower[at]) * weight;
      to[i][channel] = static_cast<std::int16_t>(static_cast<std::int32_t>(mixed) - 32768);
    }
  }
}

void sampleMixed(const MixedTexel* texels, const Tap* taps, std::size_t count, bool swapsRedAndBlue,
                 std::byte* to) {
  for (std::size_t i = 0; i < count; ++i, to += gpu::bytesPerPixel) {
    const MixedTexel& left = texels[taps[i].texel];
    const MixedTexel& right = texels[taps[i].texel + 1];
    for (std::size_t channel = 0; channel < left.size(); ++channel) {
      const std::uint32_t mixed = static_cast<std::uint32_t>(left[channel] + 32768) * (256 - taps[i].weight) +
                                  static_cast<std::uint32_t>(right[channel] + 32768) * taps[i].weight;
      to[channel] = static_cast<std::byte>((mixed + 32768) >> 16);
    }
    if (swapsRedAndBlue) std::swap(to[0], to[2]);
  }
}

void brighten(std::byte* texels, const std::byte* other, std::size_t count) {
  for (std::size_t i = 0; i < gpu::bytesPerPixel * count; ++i)
    texels[i] = std::max(texels[i], other[i]);
}

void findBrightest(const std::byte* texels, const TexelRun* runs, std::size_t count, bool swapsRedAndBlue,
                   std::byte* to) {
  for (std::size_t i = 0; i < count; ++i, to += gpu::bytesPerPixel) {
    std::array<std::byte, gpu::bytesPerPixel> brightest{};
    for (std::int32_t texel = runs[i].begin; texel < runs[i].end; ++texel)
      brighten(brightest.data(), texels + gpu::bytesPerPixel * static_cast<std::size_t>(texel), 1);
    if (swapsRedAndBlue) std::swap(brightest[0], brightest[2]);
    std::memcpy(to, brightest.data(), brightest.size());
  }
}

}  // namespace velicor::kernels::plain
