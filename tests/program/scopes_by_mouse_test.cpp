// The scopes panel in the hand of a user, with the whole program behind it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

#include "program/stage.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

constexpr std::uint32_t middleGrey = 0x999999;
constexpr QColor skinTarget(0xEB, 0xD1, 0x1A);  // middle grey in the heatmap

// The panel fills the screen's height here, at its right edge: its top-left corner is at (920, 0).
constexpr DevicePoint closeButton{938, 11};
constexpr DevicePoint hideButton{1254, 34};
constexpr DevicePoint exposureTab{1209, 74};
constexpr DevicePoint ground{928, 770};
constexpr DevicePoint leftEdge{920, 400};
constexpr DeviceRect aroundScopeCentre{1097, 200, 7, 400};

class ScopesByMouseTest : public testing::TestWithParam<Surroundings> {
 protected:
  // Below all that the window manager has to do with.
  ScopesByMouseTest() {
    stage_.painter().lower(stage_.painter().showColour({0, 0, 1280, 800}, middleGrey));
    stage_.painter().sync();
  }

  testing::AssertionResult showsPanelAt(DevicePoint place) {
    const bool composed = GetParam() == Surroundings::windowManagerAndCompositor;
    return stage_.shows(place, composed ? QColor(0x28, 0x28, 0x28) : QColor(0x1E, 0x1E, 0x1E),
                        composed ? 2 : 0);
  }
  testing::AssertionResult showsDesktopAt(DevicePoint place) {
    return stage_.shows(place, QColor::fromRgb(middleGrey));
  }

  void clickPanelChip() {
    const DevicePoint chip{loupeAtStart.right() - 33, loupeAtStart.y + 13};
    stage_.mouse().moveTo(chip);
    ASSERT_TRUE(stage_.takesMouse(loupeAtStart, chip));
    stage_.mouse().click(chip);
  }

  // Grey lies in the middle of the vectorscope. Of the graticule nothing is blue.
  bool showsTrace() {
    const QImage image = stage_.screenshot().copy(aroundScopeCentre.x, aroundScopeCentre.y,
                                                  aroundScopeCentre.width, aroundScopeCentre.height);
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        if (image.pixelColor(x, y).blue() > 140) return true;
      }
    }
    return false;
  }

  bool mouseIsFree() {
    xcb_connection_t* server = stage_.painter().raw();
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(server)).data->root;
    const auto grab = xcb_grab_pointer(server, 0, root, 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, XCB_NONE,
                                       XCB_NONE, XCB_CURRENT_TIME);
    const std::unique_ptr<xcb_grab_pointer_reply_t, decltype(&std::free)> reply(
        xcb_grab_pointer_reply(server, grab, nullptr), &std::free);
    if (!reply || reply->status != XCB_GRAB_STATUS_SUCCESS) return false;
    xcb_ungrab_pointer(server, XCB_CURRENT_TIME);
    stage_.painter().sync();
    return true;
  }

  Stage stage_{GetParam()};
};

TEST_P(ScopesByMouseTest, ItShowsTheScopesSetsTheModeComesAndGoesAndEndsTheProgram) {
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(showsPanelAt(ground)) << velicor.log();
  EXPECT_GT(stage_.colorAt(leftEdge).red(), stage_.colorAt(ground).red() + 16) << "a line sets it off";
  EXPECT_TRUE(waitUntil([&] { return showsTrace(); }));
  stage_.mouse().click(exposureTab);
  EXPECT_TRUE(stage_.shows(loupeCentre, skinTarget, 1));

  clickPanelChip();
  EXPECT_TRUE(showsDesktopAt(ground));
  clickPanelChip();
  EXPECT_TRUE(showsPanelAt(ground));
  stage_.mouse().click(hideButton);
  EXPECT_TRUE(showsDesktopAt(ground));
  clickPanelChip();
  EXPECT_TRUE(showsPanelAt(ground));

  // On its way the panel comes into the window manager's hand.
  stage_.mouse().moveTo(ground);
  stage_.mouse().press();
  for (const int way : {30, 60}) {
    // A hand never quite rests: a manager that has taken over meanwhile gets its motion too.
    const DevicePoint place{ground.x - way, ground.y};
    EXPECT_TRUE(waitUntil([&] {
      stage_.mouse().moveTo({place.x + 1, place.y});
      stage_.mouse().moveTo(place);
      return stage_.colorAt(place).red() < 0x40;
    }));
  }
  stage_.mouse().release();
  EXPECT_TRUE(showsDesktopAt({1270, 400}));
  EXPECT_TRUE(waitUntil([&] { return mouseIsFree(); })) << "the window manager has let go";
  stage_.mouse().click({closeButton.x - 60, closeButton.y});
  EXPECT_EQ(velicor.waitForExit(), 0);
  EXPECT_NE(velicor.settings().find("\"mode\": 2"), std::string::npos) << velicor.settings();
}

INSTANTIATE_TEST_SUITE_P(, ScopesByMouseTest,
                         testing::Values(Surroundings::noManager, Surroundings::windowManager,
                                         Surroundings::windowManagerAndCompositor),
                         [](const auto& test) { return nameOf(test.param); });

}  // namespace
}  // namespace velicor::test
