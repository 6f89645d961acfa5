#include <gtest/gtest.h>

#include "capture/stream_configuration.h"
#include "loupe/loupe_geometry.h"
#include "platform/desktop/screen_layout.h"

namespace velicor {
namespace {

class CapturedSize : public testing::TestWithParam<double> {
 protected:
  void expectSameSize(const DesktopRect& rect) const {
    desktop::Screen screen;
    screen.frame = layout.frame(0);
    screen.backingScaleFactor = GetParam();
    const auto captured = streamConfiguration(rect, screen, 15);
    const DeviceRect window = layout.toDevice(rect);
    EXPECT_EQ(window.width, captured.width) << rect.x << ", " << rect.width;
    EXPECT_EQ(window.height, captured.height) << rect.y << ", " << rect.height;
  }

  desktop::ScreenLayout layout{{{{0, 0, 2880, 1800}, GetParam()}}, 0};
};

// A preview of another size than the window would be scaled by a pixel, and blurred.
TEST_P(CapturedSize, isThatOfTheLoupesWindowWhereverItIsDragged) {
  const DesktopRect start{632.5, 362.5, 175, 175};
  for (int pixel = -300; pixel < 300; pixel += 7) {
    const double step = pixel / GetParam();
    expectSameSize(loupe_geometry::draggedFrame(LoupeZone::move, {step, step / 2}, start));
    expectSameSize(loupe_geometry::draggedFrame(LoupeZone::bottomLeft, {step / 4, step / 3}, start));
    expectSameSize({start.x + pixel * 0.1, start.y + pixel * 0.3, 175, 61.7});
  }
}

INSTANTIATE_TEST_SUITE_P(Scales, CapturedSize, testing::Values(1.0, 1.25, 1.5, 2.0));

}  // namespace
}  // namespace velicor
