#include "capture/stream_configuration.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include "platform/base/product.h"

namespace velicor {
namespace {

using screencapture::RunningApplication;
using testing::ElementsAre;

// A display above and to the right of the main one.
desktop::Screen screenWithScale(double scale) {
  desktop::Screen screen;
  screen.displayID = 7;
  screen.frame = {1000, 500, 800, 600};
  screen.backingScaleFactor = scale;
  return screen;
}

TEST(StreamConfigurationTest, TurnsTheRegionUpsideDownIntoTheDisplay) {
  const auto configuration = streamConfiguration({1100, 600, 300, 200}, screenWithScale(2), 15);
  EXPECT_EQ(configuration.sourceRect, (DisplayRect{100, 300, 300, 200}));
  EXPECT_EQ(configuration.pixelsPerPoint, 2);
  EXPECT_EQ(configuration.width, 600);
  EXPECT_EQ(configuration.height, 400);
  EXPECT_EQ(configuration.pixelFormat, screencapture::PixelFormat::bgra32);
  EXPECT_EQ(configuration.colorSpace, screencapture::ColorSpace::sRGB);
  EXPECT_EQ(configuration.minimumFrameInterval, (screencapture::FrameInterval{1, 15}));
  EXPECT_EQ(configuration.queueDepth, 3);
  EXPECT_FALSE(configuration.showsCursor);

  // What lies beside the display is left out.
  EXPECT_EQ(streamConfiguration({900, 1000, 300, 200}, screenWithScale(1), 15).sourceRect,
            (DisplayRect{0, 0, 200, 100}));
  EXPECT_EQ(streamConfiguration({1700, 400, 300, 200}, screenWithScale(1), 15).sourceRect,
            (DisplayRect{700, 500, 100, 100}));
}

TEST(StreamConfigurationTest, TakesTheTopLeftCornerWhereLessThanTwoPointsAreLeft) {
  const DisplayRect corner{0, 0, 2, 2};
  for (const DesktopRect& region : {DesktopRect{0, 0, 300, 200}, DesktopRect{1100, 600, 1.9, 200},
                                    DesktopRect{1100, 600, 200, 0}, DesktopRect{1798.5, 600, 50, 50}}) {
    const auto configuration = streamConfiguration(region, screenWithScale(1.5), 15);
    EXPECT_EQ(configuration.sourceRect, corner);
    EXPECT_EQ(configuration.width, 3);
    EXPECT_EQ(configuration.height, 3);
  }
}

TEST(StreamConfigurationTest, RoundsTheOutputSizeHalvesAwayFromZero) {
  const auto configuration = streamConfiguration({1000, 500, 281, 234.8}, screenWithScale(1.5), 15);
  EXPECT_EQ(configuration.width, 422);   // 421.5
  EXPECT_EQ(configuration.height, 352);  // 352.2
  EXPECT_EQ(streamConfiguration({1000, 500, 2, 2}, screenWithScale(0.5), 15).width, 2);
}

TEST(OwnApplicationsTest, AreFoundByProcessOrIdentifierInTheListsOrder) {
  const std::string identifier(product::identifier);
  const RunningApplication other{getpid() + 1, "example.other"};
  const RunningApplication sameProduct{getpid() + 2, identifier};
  const RunningApplication thisProcess{getpid(), ""};
  EXPECT_THAT(ownApplications({{}, {other, sameProduct, thisProcess, {getpid() + 3, ""}}}),
              ElementsAre(sameProduct, thisProcess));
}

}  // namespace
}  // namespace velicor
