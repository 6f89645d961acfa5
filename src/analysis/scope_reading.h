#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace velicor {

// What the scopes show, in numbers.
struct ScopeReading {
  // Of all samples, 0…1 each: hues on the skin-tone line and to both sides of it, as the skin indicator draws its
  // borders, whatever their brightness; and those with too little colour to have a hue.
  double onLine = 0;
  double tooGreen = 0;
  double tooPink = 0;
  double colourless = 0;

  // The lowest and the highest value of red, green and blue, 0…1 each.
  struct Range {
    double lowest = 0;
    double highest = 0;
    friend bool operator==(const Range&, const Range&) = default;
  };
  std::array<Range, 3> channels;

  friend bool operator==(const ScopeReading&, const ScopeReading&) = default;
};

// From counters as kernel_interface.h lays them out, one plane and three; none where nothing was counted. A bin's hue
// is that of its middle. Pure.
std::optional<ScopeReading> readCounters(std::span<const std::uint32_t> vectorscope,
                                         std::span<const std::uint32_t> parade);

}  // namespace velicor
