#pragma once

#include <algorithm>
#include <cstdint>

// The decisions about single pixels, in 32-bit integers only: no value here ever leaves that range, and every
// device that follows these formulas decides the same. They restate color_constants.h in whole numbers; a
// test compares the two over the colour cube.
namespace velicor::color {

// 8-bit channel values.
struct Pixel {
  std::int32_t r = 0;
  std::int32_t g = 0;
  std::int32_t b = 0;
};

// Luma in units of 1 / fullLuma. The weights sum to lumaUnit exactly: grey v has the luma v × lumaUnit.
inline constexpr std::int32_t lumaUnit = 10000;
inline constexpr std::int32_t fullLuma = 255 * lumaUnit;

constexpr std::int32_t luma(Pixel p) { return 2126 * p.r + 7152 * p.g + 722 * p.b; }

// The nearest 8-bit grey of the same luma.
constexpr std::int32_t greyOf(std::int32_t luma) { return (luma + lumaUnit / 2) / lumaUnit; }

// Bins of the vectorscope along one axis, and the level that 0 falls on.
inline constexpr std::int32_t chromaBins = 256;

// B − Y and R − Y at their largest, where Cb and Cr are 0.5.
inline constexpr std::int32_t maxBlueMinusLuma = 255 * (lumaUnit - 722);
inline constexpr std::int32_t maxRedMinusLuma = 255 * (lumaUnit - 2126);

// Column of Cb: −0.5 is the left edge of column 0, +0.5 the right edge of the last. Grey lies in column 128.
constexpr std::int32_t cbBin(Pixel p, std::int32_t luma) {
  const std::int32_t shifted = lumaUnit * p.b - luma + maxBlueMinusLuma;  // 0 … 2 × maxBlueMinusLuma
  return std::min(shifted * (chromaBins / 2) / maxBlueMinusLuma, chromaBins - 1);
}

// Row of Cr: +0.5 is the upper edge of row 0, −0.5 the lower edge of the last. Grey lies in row 128.
constexpr std::int32_t crBin(Pixel p, std::int32_t luma) {
  const std::int32_t shifted = maxRedMinusLuma - (lumaUnit * p.r - luma);
  return std::min(shifted * (chromaBins / 2) / maxRedMinusLuma, chromaBins - 1);
}

// Cb and Cr in units of 1 / 65280, so that 0.5 is 32640 and a sum of two squares or products with a Q15
// number stays within 32 bits. The weights are 2²⁰ × those of the formulas and sum to zero: grey is exactly
// 0.
struct Chroma {
  std::int32_t cb = 0;
  std::int32_t cr = 0;
};
inline constexpr std::int32_t halfChroma = 32640;

constexpr Chroma chroma(Pixel p) {
  return {(-120138 * p.r - 404150 * p.g + 524288 * p.b) >> 12,
          (524288 * p.r - 476214 * p.g - 48074 * p.b) >> 12};
}

// A half-line from the origin: cosine and sine of its angle in Q15.
struct Ray {
  std::int32_t cosine;
  std::int32_t sine;
};

// The borders of the skin zones, at 30, 6, −6 and −20 degrees from the skin-tone line.
inline constexpr Ray greenEnd{-29197, 14876};
inline constexpr Ray onLineGreen{-20622, 25466};
inline constexpr Ray onLinePink{-14876, 29197};
inline constexpr Ray pinkEnd{-7371, 31928};

// Positive for a colour counter-clockwise of the ray, 0 on it.
constexpr std::int32_t sideOf(Ray ray, Chroma c) { return ray.cosine * c.cr - ray.sine * c.cb; }

// The limits of SkinZones in the units above.
inline constexpr std::int32_t minSkinChroma = halfChroma * 5 / 100;
inline constexpr std::int32_t maxSkinChroma = halfChroma * 45 / 100;
inline constexpr std::int32_t minSkinLuma = fullLuma / 100 * 8;
inline constexpr std::int32_t maxSkinLuma = fullLuma / 100 * 95;

// The palette entry that a pixel is painted with, or notSkin.
enum class SkinZone : std::int32_t { onLine = 0, green = 1, pink = 2, notSkin = 3 };

constexpr SkinZone skinZone(Pixel p, std::int32_t luma) {
  if (luma < minSkinLuma || luma > maxSkinLuma) return SkinZone::notSkin;
  const Chroma c = chroma(p);
  const std::int32_t squared = c.cb * c.cb + c.cr * c.cr;
  if (squared < minSkinChroma * minSkinChroma || squared > maxSkinChroma * maxSkinChroma) {
    return SkinZone::notSkin;
  }
  // The wedge is narrower than a half-plane, so that two sides tell it from the one opposite.
  if (sideOf(pinkEnd, c) < 0 || sideOf(greenEnd, c) > 0) return SkinZone::notSkin;
  if (sideOf(onLineGreen, c) > 0) return SkinZone::green;
  return sideOf(onLinePink, c) < 0 ? SkinZone::pink : SkinZone::onLine;
}

// The heat scale in steps of 1 / heatSteps of full luma: fine enough that no channel moves by more than one
// code value between two steps, and every level of the palette is a whole step.
inline constexpr std::int32_t heatStep = 250;
inline constexpr std::int32_t heatSteps = fullLuma / heatStep;

constexpr std::int32_t heatIndex(std::int32_t luma) { return luma / heatStep; }

}  // namespace velicor::color
