#include "app/app_state_fixture.h"
#include "loupe/loupe_controller.h"
#include "support/main_loop.h"
#include "support/robot.h"
#include "support/x11_main.h"

namespace velicor {
namespace {

using Mode = MetalProcessor::Mode;

// The state with a real loupe on a private display.
class AppStateLoupeTest : public test::AppStateFixture {
 protected:
  void addLoupe() {
    loupe = std::make_shared<LoupeController>(state().processor, *desktop);
    state().loupe = loupe;
  }

  std::unique_ptr<desktop::Desktop> desktop = std::move(*desktop::Desktop::open());
  std::shared_ptr<LoupeController> loupe;
};

TEST_F(AppStateLoupeTest, ChangesReachTheLoupe) {
  addLoupe();
  state().setMode(Mode::original);
  EXPECT_TRUE(loupe->metalView()->isHidden());
  state().setMode(Mode::exposure);
  EXPECT_FALSE(loupe->metalView()->isHidden());
  state().setOpacity(0.25);
  EXPECT_EQ(loupe->metalView()->alphaValue(), 0.25);
}

TEST_F(AppStateLoupeTest, ALockedLoupeLetsTheMouseThroughAtOnce) {
  addLoupe();
  const DesktopRect frame = loupe->panel().frame();
  loupe->panel().orderFront();
  test::Robot robot(test::xServer().name());
  robot.moveTo({static_cast<int>(frame.minX()) + 5, 450});  // on the left edge, half way up
  loupe->updateMousePassthrough();
  EXPECT_FALSE(loupe->panel().ignoresMouseEvents());
  state().setLocked(true);
  EXPECT_TRUE(loupe->frameView().isLocked);
  EXPECT_TRUE(loupe->panel().ignoresMouseEvents());
  state().setLocked(false);
  EXPECT_FALSE(loupe->panel().ignoresMouseEvents());
}

TEST_F(AppStateLoupeTest, ALoupeWithoutPreviewOrThatIsGoneIsNoTrouble) {
  hasProcessor = false;
  addLoupe();
  const auto changeEverything = [this](bool locked) {
    state().applyRestoredSettings();
    state().setMode(Mode::original);
    state().setOpacity(0.5);
    state().setLocked(locked);
  };
  changeEverything(true);
  EXPECT_TRUE(loupe->frameView().isLocked);
  loupe.reset();
  changeEverything(false);
  EXPECT_FALSE(state().locked());
}

}  // namespace
}  // namespace velicor
