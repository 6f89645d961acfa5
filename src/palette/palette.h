#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velicor {

// The colours that the analysis modes paint with: three for the skin indicator and a scale of eight for the
// exposure heatmap. A value: copied, never shared. A new one holds the standard colours.
struct Palette {
  // sRGB intensities, 0 (none) to 1 (full) and finite. Equal when each component is exactly equal.
  struct RGB {
    double r = 0;
    double g = 0;
    double b = 0;

    // Six hexadecimal digits of either case, with or without one "#" in front; a sign may stand for the first
    // digit. Anything else gives no colour.
    static std::optional<RGB> fromHex(std::string_view text);

    // The byte nearest to a component, halves upwards, held within its range; 0 for what is no number.
    static int byteOf(double component);

    // "#RRGGBB" in capitals, of those bytes.
    std::string hex() const;

    friend bool operator==(const RGB&, const RGB&) = default;
  };

  static constexpr std::size_t heatCount = 8;
  static constexpr std::size_t colorCount = 3 + heatCount;

  // Red, green, blue and alpha (always 1) of every colour, as the analysis kernels index them: 0 skinOn,
  // 1 skinGreen, 2 skinPink, 3… the heat scale from its darkest level.
  using Buffer = std::array<std::array<float, 4>, colorCount>;

  // What each entry of the heat scale stands for: a share of full luminance, and its name.
  static constexpr std::array<double, heatCount> heatLevels{0.0, 0.15, 0.32, 0.47, 0.6, 0.75, 0.9, 1.0};
  static constexpr std::array<std::string_view, heatCount> heatNames{
      "black", "deep shadow", "shadow", "dark skin", "skin target", "hot", "near clip", "clip"};

  static const Palette& standard();

  Palette() = default;

  // From the stored form. Anything but eleven readable colours gives the standard palette as a whole.
  explicit Palette(std::span<const std::string> stored);

  // The stored form: the colours' hex strings in the order of Buffer. Every component comes back from it as
  // a multiple of 1/255.
  std::vector<std::string> stored() const;

  Buffer buffer() const;

  RGB skinOn{1.0, 0.95, 0.0};     // on the vectorscope's skin-tone line
  RGB skinGreen{0.0, 1.0, 0.15};  // drifting off the line towards green
  RGB skinPink{1.0, 0.1, 0.75};   // drifting off the line towards pink
  std::array<RGB, heatCount> heat{{{0.42, 0.0, 0.55},
                                   {0.32, 0.2, 0.75},
                                   {0.18, 0.45, 0.8},
                                   {0.25, 0.68, 0.38},
                                   {0.92, 0.82, 0.1},
                                   {1.0, 0.45, 0.05},
                                   {1.0, 0.15, 0.03},
                                   {1.0, 0.0, 0.0}}};

  friend bool operator==(const Palette&, const Palette&) = default;

 private:
  std::array<RGB, colorCount> colors() const;
};

}  // namespace velicor
