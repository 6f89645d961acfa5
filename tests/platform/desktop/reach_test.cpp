#include "platform/desktop/reach.h"

#include <gtest/gtest.h>

namespace velicor::desktop {
namespace {

Screen screenAt(const DesktopRect& frame) {
  Screen screen;
  screen.frame = frame;
  screen.visibleFrame = {frame.x, frame.y + 30, frame.width, frame.height - 30};
  return screen;
}

TEST(Reach, whatIsNotWholeMovesAsFarAsItMust) {
  const std::vector<Screen> screens{screenAt({0, 0, 1280, 800}), screenAt({1340, 0, 500, 400})};
  const auto whole = [&](const DesktopRect& window) { return madeWhole(window, screens, screens[0]); };
  EXPECT_EQ(whole({100, 100, 360, 700}), std::nullopt);
  EXPECT_EQ(whole({1340, 0, 500, 400}), std::nullopt) << "below a bar, by the user's hand";
  EXPECT_EQ(whole({1080, 100, 360, 700}), (DesktopRect{920, 100, 360, 700})) << "cut";
  EXPECT_EQ(whole({1250, 100, 300, 200}), (DesktopRect{1340, 100, 300, 200})) << "most of it is on the other one";
  EXPECT_EQ(whole({2500, 10, 300, 200}), (DesktopRect{980, 30, 300, 200})) << "lost";
  EXPECT_EQ(whole({1400, 10, 300, 900}), (DesktopRect{1400, -500, 300, 900})) << "too high: its top shows";
  EXPECT_TRUE(isWithinReach({-140, 100, 175, 175}, screens));
  EXPECT_FALSE(isWithinReach({-160, 100, 175, 175}, screens));
}

}  // namespace
}  // namespace velicor::desktop
