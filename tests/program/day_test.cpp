// From the launch to the end and the next launch, by mouse and keys alone.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include "program/stage.h"
#include "program/status_area.h"
#include "support/bell.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

using namespace std::chrono_literals;

// On the skin line, and the heatmap's colour for it.
constexpr std::uint32_t lightSkin = 0xC29682;
constexpr QColor onTheLine(0xFF, 0xF2, 0x00);
constexpr QColor inTheHeatmap(0xED, 0xC5, 0x18);

// The panel fills the screen's height at its right edge: its top-left corner is at (920, 0).
constexpr DevicePoint panelGround{928, 770};
constexpr DevicePoint menuButton{1254, 11};
constexpr DevicePoint belowTheButton{1200, 100};
constexpr DevicePoint hideButton{1254, 34};

constexpr DeviceRect loupe{413, 363, 175, 175};
constexpr DevicePoint inTheLoupe{500, 450};

class DayTest : public testing::Test {
 protected:
  DayTest() {
    stage_.painter().lower(stage_.painter().showColour({0, 0, 1280, 800}, lightSkin));
    stage_.painter().sync();
  }

  testing::AssertionResult shows(QColor color) { return stage_.shows(inTheLoupe, color, 2); }
  Robot& hand() { return stage_.mouse(); }

  // Opens the commands' menu, which then covers the place, and chooses a mode in it, until the loupe shows its colour:
  // a user too tries again where a window was still on its way. The items are 24 pixels high, and a heading comes first.
  testing::AssertionResult pickInMenu(DevicePoint covered, int mode, QColor expected, const std::function<void()>& open) {
    const DeviceRect before = stage_.windowAt(covered);
    const bool picked = waitUntil([&] {
      open();
      if (!waitUntil([&] { return stage_.windowAt(covered) != before; }, 1s)) return false;
      const DeviceRect menu = stage_.windowAt(covered);
      hand().click({menu.x + 60, menu.y + 41 + 24 * mode});
      return bool(stage_.shows(inTheLoupe, expected, 2, 2s));
    });
    return picked ? testing::AssertionSuccess() : shows(expected);
  }

  QVariantMap statusItem(StatusArea& area, int index) { return area.menu().value(index).properties; }

  // Where a pixel of the bubble is, when there is one: it covers the screen above the loupe.
  testing::AssertionResult showsBubble(bool shown) {
    const DevicePoint inIt{loupe.right() - 33, loupe.y - 8};
    const QColor yellow(0xFF, 0xCC, 0x00);
    const bool right = waitUntil([&] {
      const QColor found = stage_.colorAt(inIt);
      return shown ? std::abs(found.green() - yellow.green()) < 16 && found.blue() < 0x40
                   : found == QColor::fromRgb(lightSkin);
    });
    return right ? testing::AssertionSuccess()
                 : testing::AssertionFailure()
                       << stage_.colorAt(inIt).name().toStdString() << " above the loupe";
  }

  Stage stage_{Surroundings::windowManager};
  SessionBus bus_;
  Bell bell_{stage_.launch().display};
};

TEST_F(DayTest, IsLivedByMouseAndKeys) {
  StatusArea area(bus_.connection());
  Launch launch = stage_.launch();
  launch.environment = {bus_.environment()};
  RunningVelicor velicor(launch);
  ASSERT_TRUE(stage_.shows(loupeCentre, onTheLine, 1)) << velicor.log();
  ASSERT_TRUE(area.hasItem());

  const DevicePoint chip = moveChipOf(loupeAtStart);
  hand().moveTo(chip);
  ASSERT_TRUE(stage_.takesMouse(loupeAtStart, chip));
  hand().drag(chip, moveChipOf(loupe));
  ASSERT_TRUE(stage_.takesMouse(loupe, moveChipOf(loupe)));
  EXPECT_TRUE(shows(onTheLine));

  // By the keys, while the mouse is on the loupe's edge.
  hand().moveTo(leftBandOf(loupe));
  ASSERT_TRUE(stage_.hasKeyboard(loupe));
  hand().strike({key::control, key::digit3});
  EXPECT_TRUE(shows(inTheHeatmap));
  hand().strike({key::control, key::digit1});
  EXPECT_TRUE(shows(QColor::fromRgb(lightSkin)));
  hand().strike({key::control, key::digit2});
  EXPECT_TRUE(shows(onTheLine));

  // By every menu.
  const DevicePoint edge = leftBandOf(loupe);
  EXPECT_TRUE(pickInMenu({edge.x + 40, edge.y + 40}, 2, inTheHeatmap,
                         [&] { hand().click(edge, Robot::rightButton); }));
  hand().click(panelGround);
  ASSERT_TRUE(stage_.hasKeyboard("Velicor"));
  EXPECT_TRUE(pickInMenu(belowTheButton, 0, QColor::fromRgb(lightSkin), [&] { hand().strike({key::f10}); }));
  EXPECT_TRUE(pickInMenu({panelGround.x + 40, panelGround.y - 40}, 1, onTheLine,
                         [&] { hand().click(panelGround, Robot::rightButton); }));
  EXPECT_TRUE(pickInMenu(belowTheButton, 2, inTheHeatmap, [&] { hand().click(menuButton); }));
  area.choose(area.menu().value(4).id);
  EXPECT_TRUE(shows(onTheLine)) << "the status item";

  EXPECT_TRUE(stage_.hasKeyboard("Velicor"));
  hand().strike({key::control, key::l});
  EXPECT_TRUE(waitUntil([&] { return stage_.colorAt(onFrameLine(loupe)).blue() > 0x30; }))
      << "grey over yellow";
  hand().strike({key::control, key::l});

  hand().click(hideButton);
  EXPECT_TRUE(showsBubble(true));
  EXPECT_TRUE(stage_.shows(panelGround, QColor::fromRgb(lightSkin)));
  EXPECT_TRUE(showsBubble(false));

  area.choose(area.menu().value(0).id);
  EXPECT_TRUE(stage_.shows(inTheLoupe, QColor::fromRgb(lightSkin)));
  hand().strike({key::control, key::alt, key::super, key::s});
  EXPECT_TRUE(shows(onTheLine));

  EXPECT_EQ(statusItem(area, 1).value("label"), "Shortcut: ⌃⌥⌘S");
  area.choose(area.menu().value(1).id);
  ASSERT_TRUE(stage_.hasKeyboard("Velicor Shortcut"));
  hand().strike({key::super, key::a});
  EXPECT_TRUE(bell_.sounds());
  EXPECT_TRUE(stage_.hasKeyboard("Velicor Shortcut"));
  hand().strike({key::control, key::shift, key::a});
  EXPECT_TRUE(waitUntil([&] { return statusItem(area, 1).value("label") == "Shortcut: ⌃⇧A"; }));

  hand().moveTo(leftBandOf(loupe));
  ASSERT_TRUE(stage_.hasKeyboard(loupe));
  hand().strike({key::control, key::digit3});
  EXPECT_TRUE(shows(inTheHeatmap));
  hand().strike({key::control, key::q});
  EXPECT_EQ(velicor.waitForExit(), 0) << velicor.log();
  EXPECT_EQ(velicor.log().find("rror"), std::string::npos) << velicor.log();

  launch.withSettings = false;
  launch.environment.push_back("XDG_CONFIG_HOME=" + velicor.folder() + "/config");
  RunningVelicor next(launch);
  EXPECT_TRUE(stage_.shows(loupeCentre, inTheHeatmap, 2)) << next.log();
  hand().strike({key::control, key::shift, key::a});
  EXPECT_TRUE(stage_.shows(loupeCentre, QColor::fromRgb(lightSkin)));
  EXPECT_EQ(next.terminate(), 0);
}

}  // namespace
}  // namespace velicor::test
