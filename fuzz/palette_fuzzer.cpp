// Colours and palettes as they may stand in a settings file that somebody edited: a text a line.
#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "demand.h"
#include "palette/palette.h"

namespace {

using velicor::Palette;
using velicor::fuzz::demand;
using RGB = Palette::RGB;

bool isColor(const RGB& color) {
  const auto isShare = [](double component) { return component >= 0 && component <= 1; };
  return isShare(color.r) && isShare(color.g) && isShare(color.b);
}

// Another reading of the text, digit by digit.
std::optional<RGB> readSlowly(std::string_view text) {
  if (text.starts_with('#')) text.remove_prefix(1);
  if (text.size() != 6) return std::nullopt;
  const bool negative = text.front() == '-';
  if (negative || text.front() == '+') text.remove_prefix(1);
  std::uint32_t number = 0;
  for (const char c : text) {
    const int lower = std::tolower(static_cast<unsigned char>(c));
    const std::size_t digit = std::string_view("0123456789abcdef").find(static_cast<char>(lower));
    if (c == '\0' || digit == std::string_view::npos) return std::nullopt;
    number = number * 16 + static_cast<std::uint32_t>(digit);
  }
  if (negative) number = 0U - number;
  return RGB{(number >> 16 & 255) / 255.0, (number >> 8 & 255) / 255.0, (number & 255) / 255.0};
}

void checkColor(std::string_view text) {
  const auto color = RGB::fromHex(text);
  demand(color == readSlowly(text), "a colour is what its digits say");
  if (!color) return;
  demand(isColor(*color), "a colour that was read is one");
  demand(RGB::fromHex(color->hex()) == color, "a colour survives being written");
}

// Whatever is calculated can be written, and the nearest colour comes back.
void checkComponents(std::string_view input) {
  std::array<double, 3> any;
  if (input.size() < sizeof any) return;
  std::memcpy(any.data(), input.data(), sizeof any);
  const auto back = RGB::fromHex(RGB{any[0], any[1], any[2]}.hex());
  demand(back.has_value(), "every colour that is written can be read");
  const std::array read{back->r, back->g, back->b};
  for (std::size_t i = 0; i < any.size(); ++i) {
    const double wanted = std::isnan(any[i]) ? 0 : std::clamp(any[i], 0.0, 1.0);
    demand(std::abs(read[i] - wanted) <= 0.5 / 255 + 1e-12, "a component is rounded to the nearest byte");
  }
}

void checkPalette(const std::vector<std::string>& stored) {
  const Palette palette(stored);
  const bool readable = stored.size() == Palette::colorCount && std::ranges::all_of(stored, [](const auto& text) {
                          return RGB::fromHex(text).has_value();
                        });
  demand(readable || palette == Palette::standard(), "what can't be read gives the standard palette");
  const auto written = palette.stored();
  demand(written.size() == Palette::colorCount, "a palette has all its colours");
  demand(Palette(written).stored() == written, "a palette that was written stays as it is");
  for (const auto& [r, g, b, alpha] : palette.buffer())
    demand(isColor({r, g, b}) && alpha == 1, "the kernels get colours");
  if (!readable) return;
  demand(Palette(written) == palette, "a palette that was read survives being written");
  for (std::size_t i = 0; i < written.size(); ++i)
    demand(RGB::fromHex(stored[i]) == RGB::fromHex(written[i]), "each colour is in its place");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  checkColor(input);
  checkComponents(input);
  std::vector<std::string> lines(1);
  for (const char c : input) {
    if (c == '\n') {
      lines.emplace_back();
    } else {
      lines.back() += c;
    }
  }
  for (const std::string& line : lines)
    checkColor(line);
  checkPalette(lines);
  return 0;
}
