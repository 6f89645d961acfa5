// The integer formulas against the colour facts that they restate, over the colour cube.
#include "analysis/kernels/pixel_math.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "analysis/kernels/color_constants.h"

namespace velicor::color {
namespace {

struct Reference {
  double luma;
  double cb;
  double cr;
  double hueFromLine;  // degrees, −180…180, positive towards green
  double chroma;       // share of 0.5
};

Reference referenceOf(Pixel p) {
  const double r = p.r / 255.0, g = p.g / 255.0, b = p.b / 255.0;
  const double y = lumaRed * r + lumaGreen * g + lumaBlue * b;
  const double cb = (b - y) / cbDivisor, cr = (r - y) / crDivisor;
  const double hue = std::atan2(cr, cb) * 180 / std::numbers::pi - skinLineDegrees;
  return {y, cb, cr, std::remainder(hue, 360), std::hypot(cb, cr) / 0.5};
}

template <typename Check>
void forColours(int step, Check check) {
  for (int r = 0; r < 256; r += step) {
    for (int g = 0; g < 256; g += step) {
      for (int b = 0; b < 256; b += step)
        check(Pixel{r, g, b});
    }
  }
}

TEST(PixelMath, LumaIsExactAndGreyStaysGrey) {
  forColours(15, [](Pixel p) { ASSERT_NEAR(lumaOf(p) / double{fullLuma}, referenceOf(p).luma, 1e-12); });
  for (int v = 0; v < 256; ++v) {
    EXPECT_EQ(lumaOf({v, v, v}), v * lumaUnit);
    EXPECT_EQ(greyOf(lumaOf({v, v, v})), v);
    EXPECT_EQ(cbBin({v, v, v}, lumaOf({v, v, v})), 128);
    EXPECT_EQ(crBin({v, v, v}, lumaOf({v, v, v})), 128);
    EXPECT_EQ(chromaOf({v, v, v}).cb, 0);
    EXPECT_EQ(chromaOf({v, v, v}).cr, 0);
  }
}

TEST(PixelMath, BinsContainTheirColours) {
  constexpr double slack = 1e-9;
  forColours(5, [](Pixel p) {
    const Reference reference = referenceOf(p);
    const double left = cbBin(p, lumaOf(p)) / 256.0 - 0.5;
    const double top = 0.5 - crBin(p, lumaOf(p)) / 256.0;
    ASSERT_TRUE(left <= reference.cb + slack && reference.cb <= left + 1 / 256.0 + slack)
        << p.r << p.g << p.b;
    ASSERT_TRUE(top - 1 / 256.0 <= reference.cr + slack && reference.cr <= top + slack) << p.r << p.g << p.b;
  });
  EXPECT_EQ(crBin({255, 0, 0}, lumaOf({255, 0, 0})), 0);
  EXPECT_EQ(cbBin({255, 0, 0}, lumaOf({255, 0, 0})), 98);  // Cb −0.1146
  EXPECT_EQ(crBin({0, 255, 255}, lumaOf({0, 255, 255})), 255);
  EXPECT_EQ(cbBin({0, 0, 255}, lumaOf({0, 0, 255})), 255);
  EXPECT_EQ(cbBin({255, 255, 0}, lumaOf({255, 255, 0})), 0);
}

int zoneOf(const Reference& reference) {
  const SkinZones& limits = skinZones;
  if (reference.luma < limits.minLuma || reference.luma > limits.maxLuma) return zoneNotSkin;
  if (reference.chroma < limits.minChroma || reference.chroma > limits.maxChroma) return zoneNotSkin;
  const double delta = reference.hueFromLine;
  if (std::abs(delta) <= limits.onLine) return zoneOnLine;
  if (delta > 0) return delta <= limits.driftingGreen ? zoneGreen : zoneNotSkin;
  return delta >= limits.driftingPink ? zonePink : zoneNotSkin;
}

// Too near to a border for the integers to be held to the real numbers.
bool isOnABorder(const Reference& reference) {
  const SkinZones& limits = skinZones;
  for (const double edge : {limits.onLine, -limits.onLine, limits.driftingGreen, limits.driftingPink}) {
    if (std::abs(reference.hueFromLine - edge) < 0.05) return true;
  }
  return std::abs(reference.chroma - limits.minChroma) < 1e-4 ||
         std::abs(reference.chroma - limits.maxChroma) < 1e-4 ||
         std::abs(reference.luma - limits.minLuma) < 1e-9 || std::abs(reference.luma - limits.maxLuma) < 1e-9;
}

TEST(PixelMath, SkinZonesFollowTheirTable) {
  std::array<int, 4> seen{};
  forColours(3, [&](Pixel p) {
    const Reference reference = referenceOf(p);
    if (isOnABorder(reference)) return;
    const int zone = skinZone(p, lumaOf(p));
    ASSERT_EQ(zone, zoneOf(reference)) << p.r << " " << p.g << " " << p.b << " hue " << reference.hueFromLine;
    ++seen[static_cast<std::size_t>(zone)];
  });
  for (const int count : seen)
    EXPECT_GT(count, 1000);
}

}  // namespace
}  // namespace velicor::color
