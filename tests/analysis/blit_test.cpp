#include <cmath>

#include <gmock/gmock.h>

#include "analysis/kernel_fixture.h"

namespace velicor::test {
namespace {

constexpr Rgb nearBlack{5, 5, 5};  // the clear colour 0.02

using BlitTest = KernelTest;

Rgb speckled(int x, int y) { return {(x * 37 + y * 11) % 256, (x * 5 + y * 91) % 256, (x * y) % 256}; }

TEST_P(BlitTest, ATextureAtItsOwnSizeArrivesBitForBit) {
  for (const auto& [width, height] : {std::pair(641, 403), std::pair(2, 2), std::pair(3841, 5)}) {
    const auto frame = frameOf(width, height, speckled);
    const Pixels same = drawn(frame, {width, height});
    EXPECT_EQ(same.rgba, readPixels(wrap(frame)).rgba) << width;
  }
}

TEST_P(BlitTest, OutsideTheScaledRectangleTheClearColourStays) {
  // 64 × 64 in 200 × 150: bars of 25 pixels left and right.
  const Pixels bars = drawn(plainFrame(64, 64, {200, 100, 50}), {200, 150}, {0.75F, 1});
  for (const int y : {0, 75, 149}) {
    EXPECT_EQ(bars.rgb(0, y), nearBlack);
    EXPECT_EQ(bars.rgb(24, y), nearBlack);
    EXPECT_EQ(bars.rgb(25, y), (Rgb{200, 100, 50}));
    EXPECT_EQ(bars.rgb(174, y), (Rgb{200, 100, 50}));
    EXPECT_EQ(bars.rgb(175, y), nearBlack);
    EXPECT_EQ(bars.rgb(199, y), nearBlack);
  }
}

TEST_P(BlitTest, BlendsBetweenTexelCentresAndHoldsTheEdges) {
  const auto frame = frameOf(2, 2, [](int x, int y) { return Rgb{x * 200, y * 100, 0}; });
  const Pixels large = drawn(frame, {4, 4});
  const int across[] = {0, 50, 150, 200};
  const int down[] = {0, 25, 75, 100};
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 4; ++x)
      EXPECT_EQ(large.rgb(x, y), (Rgb{across[x], down[y], 0})) << x << " " << y;
  }
}

TEST_P(BlitTest, TheLoupeMadeSmallerKeepsItsLightness) {
  const auto checks = frameOf(8, 8, [](int x, int y) {
    return (x + y) % 2 ? Rgb{200, 100, 50} : Rgb{0, 0, 0};
  });
  for (const auto& pixel : drawn(checks, {4, 4}).rgba)
    EXPECT_EQ(pixel[0], 100);
}

// What the panel gives to the scopes at scales 1 and 1.25, and on screens of 720 and 600 rows.
constexpr gpu::Extent paradeSizes[] = {{328, 109}, {251, 84}, {161, 54}, {410, 136}};
constexpr Rgb trace{200, 100, 50};

TEST_P(BlitTest, NoLevelOfTheParadeIsLost) {
  constexpr int apart = 8;  // levels that share no row of pixels
  for (int first = 0; first < apart; ++first) {
    const auto levels = frameOf(kernels::paradeWidth, kernels::paradeHeight,
                                [first](int, int y) { return (255 - y) % apart == first ? trace : Rgb{}; });
    for (const gpu::Extent& size : paradeSizes) {
      const double extent = size.width * 256.0 / kernels::paradeWidth;
      const double top = (size.height - extent) / 2;
      const Pixels shown = drawn(levels, size, {1, static_cast<float>(extent / size.height)}, "blitScope");
      for (int level = first; level < 256; level += apart) {
        const int row = static_cast<int>(top + (255.5 - level) * extent / 256);
        const int seen = std::clamp(row, static_cast<int>(std::ceil(top - 0.5)),
                                    static_cast<int>(std::ceil(top + extent - 0.5)) - 1);
        EXPECT_EQ(shown.rgb(size.width / 2, seen), trace) << level << " at " << size.width;
      }
    }
  }
}

TEST_P(BlitTest, NoBinOfTheVectorscopeIsLost) {
  constexpr int apart = 4;  // bins that share no pixel
  for (int first = 0; first < apart * apart; ++first) {
    const int column = first % apart, row = first / apart;
    const auto bins = frameOf(kernels::vectorscopeSide, kernels::vectorscopeSide, [&](int x, int y) {
      return x / 2 % apart == column && y / 2 % apart == row ? trace : Rgb{};
    });
    for (const gpu::Extent& size : paradeSizes) {
      const int side = size.width;
      const Pixels shown = drawn(bins, {side, side}, {}, "blitScope");
      const auto pixelOf = [side](int bin) { return (2 * bin + 1) * side / kernels::vectorscopeSide; };
      int lost = 0;
      for (int y = row; y < kernels::scopeBins; y += apart) {
        for (int x = column; x < kernels::scopeBins; x += apart)
          lost += shown.rgb(pixelOf(x), pixelOf(y)) == trace ? 0 : 1;
      }
      EXPECT_EQ(lost, 0) << "of every fourth bin from " << column << ", " << row << " at " << side;
    }
  }
}

TEST_P(BlitTest, AScopeShownLargerStaysAsItIsOnItsGround) {
  const auto frame = frameOf(97, 61, speckled);
  for (const auto& size : {gpu::Extent{97, 61}, gpu::Extent{150, 99}}) {
    const Pixels plain = drawn(frame, size), scope = drawn(frame, size, {}, "blitScope");
    for (std::size_t i = 0; i < plain.rgba.size(); ++i) {
      for (std::size_t channel = 0; channel < 3; ++channel)
        ASSERT_EQ(scope.rgba[i][channel], std::max<int>(plain.rgba[i][channel], kernels::scopeGround));
    }
  }
  EXPECT_EQ(drawn(plainFrame(64, 64, {}), {40, 30}, {0.75F, 1}, "blitScope").rgb(20, 15), nearBlack);
}

INSTANTIATE_TEST_SUITE_P(Devices, BlitTest, testing::ValuesIn(gpu::test::allDevices()),
                         gpu::test::deviceName);

}  // namespace
}  // namespace velicor::test
