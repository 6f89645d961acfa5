#include "menubar/menu_bar_controller.h"

#include <filesystem>
#include <map>

#include <gmock/gmock.h>

#include "app/app_state_fixture.h"
#include "loupe/loupe_controller.h"
#include "menubar/hot_key.h"
#include "platform/desktop/activation.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/display_server.h"
#include "platform/hotkeys/hot_keys.h"
#include "scopes/scopes_panel_controller.h"
#include "support/main_loop.h"
#include "support/x11_main.h"
#include "support/x_client.h"

namespace velicor {
namespace {

using namespace std::chrono_literals;
using desktop::ActivationPolicy;
using testing::Contains;

class MenuBarControllerTest : public test::AppStateFixture {
 protected:
  MenuBarControllerTest() {
    desktop->activation().setPolicy(ActivationPolicy::regular);
    loupe->onFrameChange = [this](const DesktopRect& frame) { state().loupeFrameChanged(frame); };
    state().loupe = loupe;
    loupe->panel().orderFront();
    scopes.panel().orderFront();
    loupe->onFrameChange(loupe->panel().frame());
    clock.advance(100ms);
  }

  bool isOnScreen() { return loupe->panel().isVisible() && scopes.panel().isVisible(); }
  ActivationPolicy policy() { return desktop->activation().policy(); }
  const desktop::MenuItem& item(std::size_t index) { return controller.menu().at(index); }
  int checkedMode() { return item(3).checked.value() ? 0 : item(4).checked.value() ? 1 : item(5).checked.value() ? 2 : -1; }

  // Open files, threads, windows and all else that the server keeps for the clients of the display.
  std::map<std::string, unsigned> resources() {
    const auto entries = [](const char* place) {
      return static_cast<unsigned>(std::distance(std::filesystem::directory_iterator(place), {}));
    };
    auto counts = other.resources([](std::uint32_t) { return true; });
    counts["descriptors"] = entries("/proc/self/fd");
    counts["threads"] = entries("/proc/self/task");
    return counts;
  }

  test::XClient other{test::xServer().name()};
  const std::unique_ptr<desktop::Desktop> desktop = std::move(*desktop::Desktop::open());
  hotkeys::HotKeys hotKeys{*desktop};
  HotKey::Installation shortcut{{settings, hotKeys}};
  std::shared_ptr<LoupeController> loupe = std::make_shared<LoupeController>(state().processor, *desktop, clock);
  ScopesPanelController scopes{state(), *desktop};
  MenuBarController controller{state(), *loupe, scopes, {*desktop, settings, clock}};
};

TEST_F(MenuBarControllerTest, hidesEverythingAndALittleLaterItsPlaceInTheTaskbar) {
  loupe->showPanelHint();
  service->takeJournal();
  controller.hide();
  controller.hide();
  EXPECT_FALSE(loupe->panel().isVisible());
  EXPECT_FALSE(scopes.panel().isVisible());
  EXPECT_EQ(loupe->hintPanel(), nullptr);
  EXPECT_EQ(item(0).title, "Show Velicor");
  EXPECT_FALSE(item(3).enabled || item(4).enabled || item(5).enabled);
  clock.advance(599ms);
  EXPECT_THAT(service->takeJournal(), Contains("stop"));
  EXPECT_EQ(policy(), ActivationPolicy::regular);
  clock.advance(1ms);
  EXPECT_EQ(policy(), ActivationPolicy::accessory);

  controller.show();
  clock.advance(100ms);
  EXPECT_TRUE(isOnScreen());
  EXPECT_EQ(policy(), ActivationPolicy::regular);
  EXPECT_THAT(service->takeJournal(), Contains("start"));
  EXPECT_EQ(item(0).title, "Hide to Menu Bar");
  EXPECT_TRUE(item(4).enabled);
}

TEST_F(MenuBarControllerTest, keepsItsPlaceWhenShownAgainInTime) {
  controller.hide();
  clock.advance(300ms);
  controller.show();
  clock.advance(200ms);
  controller.hide();
  clock.advance(300ms);
  EXPECT_EQ(policy(), ActivationPolicy::regular) << "the first hiding's time doesn't count for the second";
  controller.show();
  clock.advance(2s);
  EXPECT_EQ(policy(), ActivationPolicy::regular);
}

TEST_F(MenuBarControllerTest, aScopesPanelThatTheUserHasHiddenStaysSo) {
  scopes.panel().orderOut();
  controller.hide();
  controller.show();
  EXPECT_TRUE(loupe->panel().isVisible());
  EXPECT_FALSE(scopes.panel().isVisible());
  EXPECT_FALSE(loupe->frameView().panelVisible);
  controller.bringBack();
  EXPECT_FALSE(scopes.panel().isVisible());
}

TEST_F(MenuBarControllerTest, theMenuShowsModeAndShortcutAsTheyAre) {
  item(5).action();
  EXPECT_EQ(state().mode(), MetalProcessor::Mode::exposure);
  EXPECT_EQ(checkedMode(), 2);
  controller.pickMode(3);
  controller.pickMode(-1);
  EXPECT_EQ(state().mode(), MetalProcessor::Mode::exposure);
  state().setMode(MetalProcessor::Mode::original);
  test::settle();
  EXPECT_EQ(checkedMode(), 0);
  EXPECT_EQ(item(1).title, "Shortcut: ⌃⌥⌘S");
  HotKey::shared().setKeyCode(0);
  EXPECT_EQ(item(1).title, "Shortcut: ⌃⌥⌘A");
  // Left behind in somebody's hands.
  const auto stale = item(0).action;
  HotKey::shared().onTrigger();
  EXPECT_TRUE(controller.isHidden());
  stale();
  EXPECT_FALSE(controller.isHidden());
}

TEST_F(MenuBarControllerTest, hidingAndShowingFiftyTimesLeavesNothingBehind) {
  const auto repeat = [this](int times) {
    for (int i = 0; i < times; ++i) {
      controller.hide();
      clock.advance(i % 2 == 0 ? 700ms : 50ms);
      controller.show();
      clock.advance(100ms);
      ASSERT_TRUE(isOnScreen());
    }
  };
  repeat(5);
  const auto before = resources();
  repeat(50);
  EXPECT_EQ(resources(), before);
}

}  // namespace
}  // namespace velicor
