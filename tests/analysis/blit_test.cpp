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

INSTANTIATE_TEST_SUITE_P(Devices, BlitTest, testing::ValuesIn(gpu::test::allDevices()),
                         gpu::test::deviceName);

}  // namespace
}  // namespace velicor::test
