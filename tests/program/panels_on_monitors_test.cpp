// Monitors beside each other with an offset and a gap, one of which goes with all that is on it.
#include <gtest/gtest.h>

#include "program/stage.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

constexpr DeviceRect leftMonitor{0, 200, 700, 600};
constexpr DeviceRect rightMonitor{760, 0, 520, 700};
constexpr DeviceRect scopesOnTheRight{920, 0, 360, 700};
constexpr DeviceRect scopesOnTheLeft{340, 200, 360, 600};
constexpr DeviceRect loupeOnTheLeft{263, 413, 175, 175};

class PanelsOnMonitorsTest : public testing::Test {
 protected:
  PanelsOnMonitorsTest() {
    stage_.painter().defineMonitor("left", leftMonitor, true);
    stage_.painter().defineMonitor("right", rightMonitor, false);
    // Where the user is at work. The manager puts it elsewhere first.
    const xcb_window_t work = stage_.painter().showPattern({800, 50, 100, 100}, {1}, {.managed = true});
    stage_.painter().move(work, 800, 50);
    stage_.painter().sync();
  }

  testing::AssertionResult isAt(const DeviceRect& window, DevicePoint place) {
    if (waitUntil([&] { return stage_.windowAt(place) == window; })) return testing::AssertionSuccess();
    const DeviceRect found = stage_.windowAt(place);
    return testing::AssertionFailure() << found.width << " x " << found.height << " at " << found.x << ", " << found.y;
  }

  Stage stage_{Surroundings::windowManager};
};

TEST_F(PanelsOnMonitorsTest, WhatAMonitorTakesAwayComesBackOnAnother) {
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(isAt(scopesOnTheRight, {1200, 690})) << velicor.log();
  ASSERT_TRUE(stage_.hasKeyboard("Velicor"));
  stage_.mouse().strike({key::f1});
  ASSERT_TRUE(stage_.hasKeyboard("Velicor Keys"));
  constexpr DevicePoint middleOfRight{1020, 350};
  ASSERT_TRUE(waitUntil([&] { return rightMonitor.contains(stage_.windowAt(middleOfRight)); }));
  const DeviceRect help = stage_.windowAt(middleOfRight);
  ASSERT_LT(help.width, 520);

  stage_.painter().deleteMonitor("right");
  // Above the scopes panel.
  const DeviceRect helpOnTheLeft{leftMonitor.right() - help.width, leftMonitor.y, help.width, help.height};
  EXPECT_TRUE(isAt(helpOnTheLeft, {690, 210})) << velicor.log();
  stage_.mouse().strike({key::escape});
  ASSERT_TRUE(stage_.hasKeyboard("Velicor"));
  EXPECT_TRUE(isAt(scopesOnTheLeft, {690, 210})) << velicor.log();
  stage_.mouse().strike({key::f6});
  EXPECT_TRUE(stage_.hasKeyboard(loupeOnTheLeft));

  // What is there stays there.
  stage_.painter().defineMonitor("right", rightMonitor, false);
  EXPECT_TRUE(isAt(scopesOnTheLeft, {690, 210}));
  EXPECT_TRUE(stage_.hasKeyboard(loupeOnTheLeft));
  EXPECT_EQ(velicor.terminate(), 0);
}

TEST_F(PanelsOnMonitorsTest, APanelKeepsItsPointsOnAMonitorOfAnotherScale) {
  Launch launch = stage_.launch();
  launch.environment.emplace_back("QT_SCREEN_SCALE_FACTORS=left=1;right=1.25");
  RunningVelicor velicor(launch);
  const DeviceRect onTheRight{830, 0, 450, 700};
  ASSERT_TRUE(isAt(onTheRight, {1200, 690})) << velicor.log();
  constexpr DevicePoint title{1000, 12};
  stage_.mouse().drag(title, {title.x - 750, title.y + 220});
  EXPECT_TRUE(waitUntil([&] { return stage_.windowAt({150, 400}).width == 360; })) << velicor.log();
  const DeviceRect onTheLeft = stage_.windowAt({150, 400});
  EXPECT_EQ(onTheLeft.height, 560);
  EXPECT_TRUE(leftMonitor.contains(DevicePoint{onTheLeft.x, onTheLeft.y}));
}

}  // namespace
}  // namespace velicor::test
