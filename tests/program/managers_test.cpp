// Window managers and compositing managers that come, go and replace each other while the program runs.
#include <gtest/gtest.h>

#include <optional>

#include "program/stage.h"
#include "support/main_loop.h"
#include "support/xfce_manager.h"

namespace velicor::test {
namespace {

// What half of the heatmap's answer makes of a colour that lies below the other half.
struct Answered {
  std::uint32_t ground;
  QColor shown;
};

constexpr Answered middleGrey{0x999999, {0xC2, 0xB5, 0x5A}};
constexpr Answered lightSkin{0xC29682, {0xD7, 0xAD, 0x4D}};

class ManagersTest : public testing::Test {
 protected:
  ManagersTest() : film_(stage_.painter().makeWindow({200, 100, 700, 600}, {.managed = true})) {
    stage_.painter().setColour(film_, middleGrey.ground);
    stage_.painter().map(film_);
  }

  static Launch halfTransparent(Launch launch) {
    launch.mode = 2;
    launch.opacity = 0.5;
    return launch;
  }

  // Another program's window is on top of all others that the manager stacks, and has just been drawn. The loupe
  // is above it, mixes its answer with it, has nothing drawn twice, and can be gripped.
  testing::AssertionResult serves() {
    stage_.painter().raise(film_);
    for (const Answered& next : {lightSkin, middleGrey}) {
      stage_.painter().setColour(film_, next.ground);
      testing::AssertionResult shown = stage_.shows(loupeCentre, next.shown, 2);
      if (shown) shown = stage_.shows({loupeAtStart.x - 5, loupeCentre.y}, QColor::fromRgb(next.ground));
      if (shown) shown = stage_.shows(onFrameLine(loupeAtStart), frameYellow, frameTolerance);
      if (!shown) return shown;
    }
    stage_.mouse().moveTo(moveChipOf(loupeAtStart));
    const bool takes = stage_.takesMouse(loupeAtStart, moveChipOf(loupeAtStart));
    stage_.mouse().moveTo({5, 5});
    return takes ? testing::AssertionSuccess() : testing::AssertionFailure() << "nothing to grip";
  }

  bool hasPanel() const {
    return waitUntil([this] { return stage_.windowAt({1100, 790}) == DeviceRect{920, 0, 360, 800}; });
  }

  Stage stage_{Surroundings::noManager};
  xcb_window_t film_;
};

TEST_F(ManagersTest, TheLoupeStaysAboveAndRightWhicheverComesAndGoes) {
  RunningVelicor velicor(halfTransparent(stage_.launch()));
  ASSERT_TRUE(serves() && hasPanel()) << velicor.log();

  std::optional<CompositingManager> compositor(stage_.server());
  EXPECT_TRUE(serves()) << "picom came";
  std::optional<WindowManager> first(stage_.server());
  EXPECT_TRUE(serves() && hasPanel()) << "openbox came";
  compositor->kill();
  EXPECT_TRUE(serves()) << "picom was killed";
  {
    const XfceManager second(stage_.server(), XfceManager::Way::instead);
    EXPECT_TRUE(serves()) << "xfwm4 took over";
    compositor.emplace(stage_.server());
    EXPECT_TRUE(serves()) << "picom came again";
    first.emplace(stage_.server(), std::vector<std::string>{"openbox", "--replace", "--sm-disable"});
    EXPECT_TRUE(serves()) << "openbox took over";
  }
  first->kill();
  EXPECT_TRUE(serves() && hasPanel()) << "openbox was killed";
  compositor.reset();
  EXPECT_TRUE(serves()) << "nobody is left";
  EXPECT_EQ(velicor.terminate(), 0);
  EXPECT_EQ(velicor.log().find("error"), std::string::npos) << velicor.log();
}

}  // namespace
}  // namespace velicor::test
