#include "analysis/scope_reading.h"

#include <cmath>
#include <numbers>
#include <numeric>

#include "analysis/kernels/color_constants.h"
#include "analysis/kernels/kernel_interface.h"

namespace velicor {

namespace {

using kernels::planeCounters;
using kernels::scopeBins;

// Cb of a column's middle; of a row's, Cr with the sign turned.
double middleOf(int bin) { return (bin + 0.5) / scopeBins - 0.5; }

// The share that a sample of this chroma counts for; none where the reading has no word for it.
double* shareFor(ScopeReading& reading, double cb, double cr) {
  constexpr color::SkinZones zones = color::skinZones;
  const double chroma = std::hypot(cb, cr) / 0.5;
  if (chroma < zones.minChroma) return &reading.colourless;
  const double hue = std::atan2(cr, cb) * 180 / std::numbers::pi;
  const double distance = std::remainder(hue - color::skinLineDegrees, 360);
  if (chroma > zones.maxChroma || distance > zones.driftingGreen || distance < zones.driftingPink) return nullptr;
  if (std::abs(distance) <= zones.onLine) return &reading.onLine;
  return distance > 0 ? &reading.tooGreen : &reading.tooPink;
}

ScopeReading::Range rangeOf(std::span<const std::uint32_t> plane) {
  const auto isEmpty = [plane](int level) {
    const auto row = plane.subspan(static_cast<std::size_t>(level) * scopeBins, scopeBins);
    return std::accumulate(row.begin(), row.end(), std::uint64_t{0}) == 0;
  };
  int lowest = 0;
  int highest = scopeBins - 1;
  while (lowest < highest && isEmpty(lowest)) ++lowest;
  while (highest > lowest && isEmpty(highest)) --highest;
  return {double(lowest) / (scopeBins - 1), double(highest) / (scopeBins - 1)};
}

}  // namespace

std::optional<ScopeReading> readCounters(std::span<const std::uint32_t> vectorscope,
                                         std::span<const std::uint32_t> parade) {
  const auto samples =
      static_cast<double>(std::accumulate(vectorscope.begin(), vectorscope.end(), std::uint64_t{0}));
  if (samples == 0) return std::nullopt;
  ScopeReading reading;
  for (std::size_t i = 0; i < planeCounters; ++i) {
    if (vectorscope[i] == 0) continue;
    const int row = static_cast<int>(i / scopeBins);
    const int column = static_cast<int>(i % scopeBins);
    double* const share = shareFor(reading, middleOf(column), -middleOf(row));
    if (share) *share += vectorscope[i] / samples;
  }
  for (std::size_t i = 0; i < reading.channels.size(); ++i) {
    reading.channels[i] = rangeOf(parade.subspan(i * planeCounters, planeCounters));
  }
  return reading;
}

}  // namespace velicor
