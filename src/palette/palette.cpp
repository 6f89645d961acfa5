#include "palette/palette.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>

#include "platform/base/geometry.h"

namespace velicor {

namespace {

constexpr std::size_t hexDigits = 6;

// A whole number in base 16 with an optional sign, and nothing else.
std::optional<std::int64_t> parseHexadecimal(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return number;
}

double componentAt(std::int64_t number, int shift) {
  return static_cast<double>((number >> shift) & 255) / 255;
}

}  // namespace

std::optional<Palette::RGB> Palette::RGB::fromHex(std::string_view text) {
  if (text.starts_with('#')) text.remove_prefix(1);
  // Counting bytes is enough: a text with a character of more than one byte is no number either.
  if (text.size() != hexDigits) return std::nullopt;
  const auto number = parseHexadecimal(text);
  if (!number) return std::nullopt;
  return RGB{componentAt(*number, 16), componentAt(*number, 8), componentAt(*number, 0)};
}

int Palette::RGB::byteOf(double component) {
  return component > 0.0 ? roundHalfAway(std::min(component, 1.0) * 255) : 0;
}

std::string Palette::RGB::hex() const {
  const auto byte = [](double component) { return static_cast<unsigned>(byteOf(component)); };
  char text[8];
  std::snprintf(text, sizeof text, "#%02X%02X%02X", byte(r), byte(g), byte(b));
  return text;
}

const Palette& Palette::standard() {
  static const Palette palette;
  return palette;
}

Palette::Palette(std::span<const std::string> stored) {
  if (stored.size() != colorCount) return;
  std::array<RGB, colorCount> restored;
  for (std::size_t i = 0; i < colorCount; ++i) {
    const auto color = RGB::fromHex(stored[i]);
    if (!color) return;
    restored[i] = *color;
  }
  skinOn = restored[0];
  skinGreen = restored[1];
  skinPink = restored[2];
  std::copy(restored.begin() + 3, restored.end(), heat.begin());
}

std::vector<std::string> Palette::stored() const {
  std::vector<std::string> texts;
  for (const RGB& color : colors())
    texts.push_back(color.hex());
  return texts;
}

Palette::Buffer Palette::buffer() const {
  Buffer entries;
  std::ranges::transform(colors(), entries.begin(), [](const RGB& color) {
    return std::array<float, 4>{static_cast<float>(color.r), static_cast<float>(color.g),
                                static_cast<float>(color.b), 1.0F};
  });
  return entries;
}

std::array<Palette::RGB, Palette::colorCount> Palette::colors() const {
  std::array<RGB, colorCount> all{skinOn, skinGreen, skinPink};
  std::ranges::copy(heat, all.begin() + 3);
  return all;
}

}  // namespace velicor
