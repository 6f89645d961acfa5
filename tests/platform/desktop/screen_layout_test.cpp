#include "platform/desktop/screen_layout.h"

#include <gtest/gtest.h>

namespace velicor::desktop {
namespace {

ScreenLayout single(double scale) { return {{{{0, 0, 1500, 900}, scale}}, 0}; }

class AtScale : public testing::TestWithParam<double> {};

TEST_P(AtScale, everyDeviceRectangleComesBackUnchanged) {
  const ScreenLayout layout = single(GetParam());
  for (int x = -40; x < 1600; x += 7) {
    const DeviceRect rect{x, x / 2 - 20, 61 + x % 13, 60 + (x + 40) % 17};
    EXPECT_EQ(layout.toDevice(layout.toDesktop(rect)), rect) << x;
  }
}

TEST_P(AtScale, aRectangleKeepsItsSizeInPixelsWhereverItIs) {
  const ScreenLayout layout = single(GetParam());
  const DeviceRect first = layout.toDevice({100, 100, 175, 80.5});
  for (double step = 0; step < 10; step += 0.3) {
    const DeviceRect moved = layout.toDevice({100 + step, 100 + step / 2, 175, 80.5});
    EXPECT_EQ(moved.width, first.width) << step;
    EXPECT_EQ(moved.height, first.height) << step;
    EXPECT_EQ(moved.x, roundHalfAway((100 + step) * GetParam())) << step;
  }
}

INSTANTIATE_TEST_SUITE_P(Scales, AtScale, testing::Values(1.0, 1.25, 1.5, 2.0));

TEST(ScreenLayout, theOriginBelongsToThePrimaryMonitor) {
  // The primary stands to the right of a taller monitor and 80 pixels lower.
  const ScreenLayout layout{{{{0, 0, 1080, 1920}, 1}, {{1080, 80, 1440, 900}, 1}}, 1};
  EXPECT_EQ(layout.frame(1), (DesktopRect{0, 0, 1440, 900}));
  EXPECT_EQ(layout.frame(0), (DesktopRect{-1080, -940, 1080, 1920}));
  EXPECT_EQ(layout.toDevice({-1080, 970, 10, 10}), (DeviceRect{0, 0, 10, 10}));
}

TEST(ScreenLayout, mixedScalesNeverOverlapAndKeepTheirOwnSize) {
  const ScreenLayout layout{
      {{{0, 0, 3840, 2160}, 2}, {{3840, 0, 1920, 1080}, 1}, {{0, 2160, 2560, 1440}, 1.5}}, 0};
  EXPECT_EQ(layout.frame(0), (DesktopRect{0, 0, 1920, 1080}));
  EXPECT_EQ(layout.frame(1), (DesktopRect{3840, 0, 1920, 1080}));
  for (std::size_t a = 0; a < 3; ++a) {
    for (std::size_t b = a + 1; b < 3; ++b)
      EXPECT_TRUE(layout.frame(a).intersection(layout.frame(b)).isEmpty());
  }
  EXPECT_EQ(layout.toDevice({3840, 980, 100, 100}), (DeviceRect{3840, 0, 100, 100}));
  EXPECT_EQ(layout.toDevice({0, 980, 100, 100}), (DeviceRect{0, 0, 200, 200}));
}

TEST(ScreenLayout, theLargerPartDecidesTheScaleAndTiesGoToTheEarlierMonitor) {
  const ScreenLayout layout{{{{0, 0, 2000, 1000}, 2}, {{2000, 0, 2000, 1000}, 2}}, 0};
  EXPECT_EQ(layout.monitorAt(DesktopRect{900, 100, 400, 100}), 1U);
  EXPECT_EQ(layout.monitorAt(DesktopRect{900, 100, 150, 100}), 0U);
  EXPECT_EQ(layout.monitorAt(DesktopRect{1950, 100, 100, 100}), 1U);
  EXPECT_EQ(layout.monitorAt(DeviceRect{1900, 0, 200, 10}), 0U);
}

TEST(ScreenLayout, offTheMonitorsTheNearestPlaneGoesOn) {
  const ScreenLayout layout{{{{0, 0, 1000, 1000}, 1}, {{1000, 0, 2000, 2000}, 2}}, 0};
  EXPECT_EQ(layout.toDevice({2100, 100, 50, 50}).width, 100);
  EXPECT_EQ(layout.toDevice({-300, 100, 50, 50}), (DeviceRect{-300, 850, 50, 50}));
  EXPECT_EQ(layout.scaleAt({-300, 100, 50, 50}), 1);
}

TEST(ScreenLayout, withoutMonitorsAPointIsAPixel) {
  const ScreenLayout layout;
  EXPECT_EQ(layout.toDevice({10, -40, 20, 30}), (DeviceRect{10, 10, 20, 30}));
  EXPECT_EQ(layout.toDesktop(DeviceRect{10, 10, 20, 30}), (DesktopRect{10, -40, 20, 30}));
}

TEST(ScreenLayout, windowsAndViewsTurnOver) {
  const DesktopRect window{100, 200, 175, 150};
  EXPECT_EQ(toFrame(DesktopPoint{110, 340}, window), (FramePoint{10, 140}));
  EXPECT_EQ(toDesktop(FrameRect{134, 129, 16, 16}, window), (DesktopRect{234, 329, 16, 16}));
  EXPECT_EQ(toView(FrameRect{134, 129, 16, 16}, 150), (ViewRect{134, 5, 16, 16}));
  EXPECT_EQ(toFrame(ViewPoint{10, 10}, 150), (FramePoint{10, 140}));
  EXPECT_EQ(toDisplay({100, 200, 10, 10}, {0, 0, 1440, 900}), (DisplayRect{100, 690, 10, 10}));
}

TEST(ScreenLayout, paintedEdgesLieOnPixels) {
  EXPECT_EQ(pixelAligned({1, 1, 173.2, 4}, 1.25), QRectF(0.8, 0.8, 173.6, 4));
}

}  // namespace
}  // namespace velicor::desktop
