#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

#include <gmock/gmock.h>

#include "analysis/kernel_fixture.h"

namespace velicor::test {
namespace {

using ScopesTest = KernelTest;

PixelBufferRef noise(int width, int height) {
  auto random = std::make_shared<std::mt19937>(3);
  return frameOf(width, height, [random](int, int) {
    const auto bits = (*random)();
    return Rgb{static_cast<int>(bits & 255), static_cast<int>(bits >> 8 & 255),
               static_cast<int>(bits >> 16 & 255)};
  });
}

int brightestOf(const Pixels& image, int x0, int x1, int y0, int y1) {
  int brightest = 0;
  for (int y = y0; y < y1; ++y) {
    for (int x = x0; x < x1; ++x)
      brightest = std::max(brightest, std::ranges::max(image.rgb(x, y)));
  }
  return brightest;
}

bool isLit(const Pixels& image, int x, int y) { return image.rgb(x, y) != Rgb{0, 0, 0}; }

TEST_P(ScopesTest, EverySampleIsCountedOnceInEveryPlane) {
  struct Case {
    int width, height, stride;
    std::uint64_t samples;
  };
  for (const auto& [width, height, stride, samples] :
       {Case{2, 2, 1, 4}, Case{317, 211, 1, 66887}, Case{317, 211, 3, 106 * 71}, Case{40, 30, 7, 6 * 5},
        Case{1920, 1080, 3, 640 * 360}}) {
    const Scopes scopes = scopesOf(noise(width, height), stride);
    EXPECT_EQ(scopes.vectorscopeSum(), samples) << width;
    for (int plane = 0; plane < 3; ++plane)
      EXPECT_EQ(scopes.paradeSum(plane), samples) << width;
  }
}

TEST_P(ScopesTest, SamplesLieOnTheirStride) {
  // Red only where the stride falls, so that a sample anywhere else shows.
  const auto frame = frameOf(50, 41, [](int x, int y) {
    return x % 3 == 0 && y % 3 == 0 ? Rgb{255, 0, 0} : Rgb{};
  });
  const Scopes scopes = scopesOf(frame, 3);
  EXPECT_EQ(scopes.chromaBin(0, 98), 17U * 14U);
}

TEST_P(ScopesTest, SaturatedColoursFallIntoTheirGraticuleBoxes) {
  // Colours of 75 %, and their column and row of 256 by the analogue Cb and Cr of BT.709.
  const std::pair<Rgb, std::pair<int, int>> boxes[] = {
      {{191, 0, 0}, {106, 32}},    {{0, 191, 0}, {54, 215}},   {{0, 0, 191}, {224, 137}},
      {{0, 191, 191}, {150, 224}}, {{191, 0, 191}, {202, 41}}, {{191, 191, 0}, {32, 119}}};
  for (const auto& [color, place] : boxes) {
    const Scopes scopes = scopesOf(plainFrame(64, 48, color));
    const auto bin = std::ranges::max_element(scopes.vectorscope) - scopes.vectorscope.begin();
    EXPECT_EQ(scopes.vectorscope[static_cast<std::size_t>(bin)], 64U * 48U);
    EXPECT_NEAR(static_cast<double>(bin % 256), place.first, 1);
    EXPECT_NEAR(static_cast<double>(bin / 256), place.second, 1);
    const auto x = static_cast<int>(bin % 256 * 2), y = static_cast<int>(bin / 256 * 2);
    EXPECT_EQ(brightestOf(scopes.vectorscopeImage, x, x + 2, y, y + 2), 255);
    EXPECT_FALSE(isLit(scopes.vectorscopeImage, x + 2, y) || isLit(scopes.vectorscopeImage, x - 1, y));
  }
}

TEST_P(ScopesTest, GreyIsOneSpotInTheCentre) {
  const Scopes scopes = scopesOf(plainFrame(80, 60, {119, 119, 119}));
  EXPECT_EQ(scopes.chromaBin(128, 128), 80U * 60U);
  int lit = 0;
  for (int y = 0; y < 512; ++y) {
    for (int x = 0; x < 512; ++x)
      lit += isLit(scopes.vectorscopeImage, x, y) ? 1 : 0;
  }
  EXPECT_EQ(lit, 4);
  EXPECT_EQ(brightestOf(scopes.vectorscopeImage, 256, 258, 256, 258), 255);
}

TEST_P(ScopesTest, WhiteIsTheTopRowOfThreePanels) {
  const Scopes scopes = scopesOf(plainFrame(512, 100, {255, 255, 255}));
  for (int x = 0; x < 780; ++x) {
    const bool isGap = (x >= 256 && x < 262) || (x >= 518 && x < 524);
    ASSERT_EQ(isLit(scopes.paradeImage, x, 0), !isGap) << x;
  }
  EXPECT_EQ(brightestOf(scopes.paradeImage, 0, 780, 1, 256), 0);
  const Rgb red = scopes.paradeImage.rgb(0, 0), green = scopes.paradeImage.rgb(262, 0),
            blue = scopes.paradeImage.rgb(779, 0);
  EXPECT_TRUE(red[0] > red[1] && green[1] > green[2] && blue[2] > blue[0]);
  for (const Pixels* image : {&scopes.vectorscopeImage, &scopes.paradeImage})
    EXPECT_TRUE(std::ranges::all_of(image->rgba, [](const auto& pixel) { return pixel[3] == 255; }));
}

TEST_P(ScopesTest, ARampIsThreeEqualDiagonals) {
  const Scopes scopes = scopesOf(frameOf(256, 16, [](int x, int) { return Rgb{x, x, x}; }));
  for (int plane = 0; plane < 3; ++plane) {
    for (int level = 0; level < 256; ++level)
      ASSERT_EQ(scopes.paradeBin(plane, level, level), 16U);
    for (int x = 0; x < 256; ++x) {
      ASSERT_TRUE(isLit(scopes.paradeImage, plane * 262 + x, 255 - x));
      ASSERT_EQ(scopes.paradeImage.rgb(plane * 262 + x, 255 - x), scopes.paradeImage.rgb(plane * 262, 255));
    }
  }
}

TEST_P(ScopesTest, BrightnessFollowsTheLogarithmOfTheCount) {
  // One blue sample and 13 greens of 300: gain 1/4, so that one sample is a quarter and 13 are log2(14) / 4.
  const auto frame = frameOf(20, 15, [](int x, int y) {
    return y == 0 && x < 13 ? Rgb{0, 255, 0} : y == 1 && x == 0 ? Rgb{0, 0, 255} : Rgb{90, 90, 90};
  });
  const Pixels image = scopesOf(frame).vectorscopeImage;
  EXPECT_NEAR(image.rgb(511, 2 * 139)[1], 255 * 0.25, 1);
  int green = 0;
  for (int x = 0; x < 100; ++x)
    green = std::max(green, brightestOf(image, x, x + 1, 460, 512));
  EXPECT_NEAR(green, 255 * std::log2(14.0) / 4, 1);
}

INSTANTIATE_TEST_SUITE_P(Devices, ScopesTest, testing::ValuesIn(gpu::test::allDevices()),
                         gpu::test::deviceName);

}  // namespace
}  // namespace velicor::test
