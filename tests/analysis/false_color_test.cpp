#include <cmath>

#include <gmock/gmock.h>

#include "analysis/kernel_fixture.h"

namespace velicor::test {
namespace {

constexpr int skin = 1;
constexpr int exposure = 2;

class FalseColorTest : public KernelTest {
 protected:
  Rgb painted(Rgb color, int mode) {
    const Pixels pixels = falseColorOf(plainFrame(2, 2, color), mode);
    EXPECT_EQ(pixels.at(1, 1)[3], 255);
    return pixels.rgb(1, 1);
  }
};

Rgb bytesOf(const Palette::RGB& color) {
  const auto byte = [](double c) { return static_cast<int>(std::lround(c * 255)); };
  return {byte(color.r), byte(color.g), byte(color.b)};
}

Rgb withGreenGain(Rgb color, double gain) {
  return {color[0], static_cast<int>(std::lround(color[1] * gain)), color[2]};
}

TEST_P(FalseColorTest, PaintsSkinByItsHue) {
  const Palette& palette = Palette::standard();
  constexpr Rgb darkSkin{115, 82, 68}, lightSkin{194, 150, 130};
  EXPECT_EQ(painted(darkSkin, skin), bytesOf(palette.skinOn));
  EXPECT_EQ(painted(lightSkin, skin), bytesOf(palette.skinOn));
  EXPECT_EQ(painted(withGreenGain(lightSkin, 1.05), skin), bytesOf(palette.skinGreen));
  EXPECT_EQ(painted(withGreenGain(lightSkin, 0.95), skin), bytesOf(palette.skinPink));
}

TEST_P(FalseColorTest, WhatIsNotSkinIsItsOwnLuma) {
  EXPECT_EQ(painted({128, 128, 128}, skin), (Rgb{128, 128, 128}));
  EXPECT_EQ(painted({0, 0, 255}, skin), (Rgb{18, 18, 18}));     // 0.0722 × 255 = 18.4
  EXPECT_EQ(painted({255, 0, 0}, skin), (Rgb{54, 54, 54}));     // near the hue, far too saturated
  EXPECT_EQ(painted({61, 105, 125}, skin), (Rgb{97, 97, 97}));  // skin's opposite
}

TEST_P(FalseColorTest, HeatIsTheEntryAtEachLevelAndLinearBetween) {
  const Pixels pixels = falseColorOf(frameOf(256, 2, [](int x, int) { return Rgb{x, x, x}; }), exposure);
  const Palette& palette = Palette::standard();
  const auto channelAt = [&](double luma, double Palette::RGB::*channel) {
    std::size_t k = 0;
    while (k + 2 < Palette::heatCount && luma > Palette::heatLevels[k + 1])
      ++k;
    const double share =
        (luma - Palette::heatLevels[k]) / (Palette::heatLevels[k + 1] - Palette::heatLevels[k]);
    return 255 * std::lerp(palette.heat[k].*channel, palette.heat[k + 1].*channel, share);
  };
  for (int x = 0; x < 256; ++x) {
    const Rgb rgb = pixels.rgb(x, 1);
    ASSERT_NEAR(rgb[0], channelAt(x / 255.0, &Palette::RGB::r), 1) << x;
    ASSERT_NEAR(rgb[1], channelAt(x / 255.0, &Palette::RGB::g), 1) << x;
    ASSERT_NEAR(rgb[2], channelAt(x / 255.0, &Palette::RGB::b), 1) << x;
  }
  // 0, 0.6 and 1 are luma values that 8 bits can hold.
  EXPECT_EQ(pixels.rgb(0, 0), bytesOf(palette.heat[0]));
  EXPECT_EQ(pixels.rgb(153, 0), bytesOf(palette.heat[4]));
  EXPECT_EQ(pixels.rgb(255, 0), bytesOf(palette.heat[7]));
}

INSTANTIATE_TEST_SUITE_P(Devices, FalseColorTest, testing::ValuesIn(gpu::test::allDevices()),
                         gpu::test::deviceName);

}  // namespace
}  // namespace velicor::test
