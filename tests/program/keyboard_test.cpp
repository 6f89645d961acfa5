// The program without a mouse: by keys, and as assistive tools see it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "program/assistive_tool.h"
#include "program/stage.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr DeviceRect screen{0, 0, 1280, 800};
constexpr std::uint32_t lightSkin = 0xC29682;
constexpr std::uint32_t middleGrey = 0x999999;
constexpr std::uint32_t otherColour = 0x204060;
constexpr QColor onTheLine(0xFF, 0xF2, 0x00);
constexpr QColor ringOverGrey(0xD6, 0xBD, 0x43);  // the accent at 60 %

class KeyboardTest : public testing::TestWithParam<Surroundings> {
 protected:
  KeyboardTest() {
    ground_ = stage_.painter().showColour(screen, middleGrey);
    sink({});
  }

  // The ground below all that the window manager has to do with, the windows next above it.
  void sink(const std::vector<xcb_window_t>& windows) {
    for (const xcb_window_t window : windows) stage_.painter().lower(window);
    stage_.painter().lower(ground_);
    stage_.painter().sync();
  }

  void strike(const std::vector<std::uint8_t>& keys, int times = 1) {
    for (int i = 0; i < times; ++i) stage_.mouse().strike(keys);
  }

  // The keyboard is back with the panel then; where nobody manages it, by a click.
  testing::AssertionResult closesHelp() {
    strike({key::escape});
    if (GetParam() == Surroundings::noManager) stage_.mouse().click({928, 770});
    return stage_.hasKeyboard("Velicor");
  }

  testing::AssertionResult showsRing(const DeviceRect& loupe, bool on) {
    const DevicePoint place{loupe.x + 5, loupe.y + loupe.height / 4};
    return stage_.shows(place, on ? ringOverGrey : QColor::fromRgb(middleGrey), 2);
  }

  xcb_window_t focus() {
    auto* reply = xcb_get_input_focus_reply(stage_.painter().raw(), xcb_get_input_focus(stage_.painter().raw()), nullptr);
    const xcb_window_t window = reply->focus;
    std::free(reply);
    return window;
  }

  Stage stage_{GetParam()};
  xcb_window_t ground_ = 0;
};

TEST_P(KeyboardTest, TheArrowsMoveAndResizeTheLoupeThatHasTheKeyboard) {
  const xcb_window_t patch = stage_.painter().showColour({0, 0, 20, 20}, lightSkin);
  sink({patch});
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(stage_.shows(onFrameLine(loupeAtStart), frameYellow, frameTolerance)) << velicor.log();
  ASSERT_TRUE(stage_.hasKeyboard("Velicor"));
  EXPECT_TRUE(showsRing(loupeAtStart, false));

  strike({key::f6});
  ASSERT_TRUE(stage_.hasKeyboard(loupeAtStart));
  EXPECT_TRUE(showsRing(loupeAtStart, true));
  strike({key::left}, 3);
  strike({key::shift, key::up}, 2);
  EXPECT_TRUE(stage_.hasKeyboard(loupeAtStart.translatedBy(-3, -20)));
  strike({key::control, key::right}, 5);
  strike({key::control, key::shift, key::down}, 2);
  DeviceRect loupe{550, 293, 180, 195};
  EXPECT_TRUE(stage_.hasKeyboard(loupe));
  // The capture is where the loupe is, to the pixel.
  stage_.painter().move(patch, loupe.right() - 40, loupe.bottom() - 40);
  EXPECT_TRUE(stage_.shows({loupe.right() - 40, loupe.bottom() - 40}, onTheLine));
  EXPECT_TRUE(stage_.shows({loupe.right() - 21, loupe.bottom() - 21}, onTheLine));
  EXPECT_TRUE(stage_.shows({loupe.right() - 20, loupe.bottom() - 20}, QColor::fromRgb(middleGrey)));

  strike({key::control, key::shift, key::left}, 15);
  loupe.width = 60;
  EXPECT_TRUE(stage_.hasKeyboard(loupe)) << "the least size";

  strike({key::control, key::l});
  EXPECT_TRUE(stage_.shows(onFrameLine(loupe), frameGrey, frameTolerance));
  strike({key::down}, 4);
  strike({key::control, key::l});
  EXPECT_TRUE(stage_.shows(onFrameLine(loupe), frameYellow, frameTolerance));
  EXPECT_TRUE(stage_.hasKeyboard(loupe)) << "locked it stayed";
  strike({key::escape});
  EXPECT_TRUE(stage_.hasKeyboard("Velicor"));
  EXPECT_TRUE(showsRing(loupe, false));
}

TEST_P(KeyboardTest, HelpComesFromEverywhereAndTheKeyboardFindsItsWay) {
  // There before the program, so that no window manager takes the keyboard to it in between.
  const bool hasManager = GetParam() != Surroundings::noManager;
  const xcb_window_t other =
      stage_.painter().showPattern({50, 50, 200, 200}, {1}, {.managed = hasManager});
  stage_.painter().setColour(other, otherColour);
  stage_.painter().move(other, 50, 50);
  ASSERT_TRUE(stage_.shows({150, 150}, QColor::fromRgb(otherColour)));
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(stage_.shows(onFrameLine(loupeAtStart), frameYellow, frameTolerance)) << velicor.log();
  ASSERT_TRUE(stage_.hasKeyboard("Velicor"));
  strike({key::f1});
  EXPECT_TRUE(stage_.hasKeyboard("Velicor Keys"));
  ASSERT_TRUE(closesHelp());
  strike({key::f6});
  ASSERT_TRUE(stage_.hasKeyboard(loupeAtStart));
  strike({key::f1});
  EXPECT_TRUE(stage_.hasKeyboard("Velicor Keys"));
  ASSERT_TRUE(closesHelp());
  strike({key::f6});
  ASSERT_TRUE(stage_.hasKeyboard(loupeAtStart));

  // Without the scopes panel, which Space hides and shows.
  constexpr DevicePoint panel{928, 770};
  strike({key::space});
  EXPECT_TRUE(stage_.shows(panel, QColor::fromRgb(middleGrey)));
  strike({key::escape});
  RunningVelicor second(stage_.launch());
  EXPECT_EQ(second.waitForExit(), 0);
  EXPECT_TRUE(stage_.hasKeyboard(loupeAtStart)) << "there is always a way";
  strike({key::space});
  EXPECT_TRUE(waitUntil([&] { return stage_.colorAt(panel).red() < 0x40; }));

  // A click elsewhere, after which the loupe has no business with keys.
  if (!hasManager) return;
  stage_.mouse().click({150, 150});
  EXPECT_TRUE(waitUntil([&] { return focus() == other; }));
  EXPECT_TRUE(showsRing(loupeAtStart, false));
}

// The same, for those who don't see it.
class AssistiveToolTest : public KeyboardTest {
 protected:
  // What has the keyboard after Tab was struck until it came to where it was.
  std::vector<std::string> wayOfTab() {
    std::vector<std::string> way;
    for (int i = 0; i < 40; ++i) {
      strike({key::tab});
      std::string next;
      const bool moved = waitUntil([&] {
        const auto thing = tool_.focused();
        next = thing ? thing->role + " " + thing->name : "";
        return !next.empty() && (way.empty() || next != way.back());
      });
      if (!moved || (!way.empty() && next == way.front())) break;
      way.push_back(next);
    }
    return way;
  }

  // By Tab.
  bool goTo(const std::string& name) {
    const auto isThere = [&] {
      const auto thing = tool_.focused();
      return thing && thing->name == name;
    };
    for (int i = 0; i < 20; ++i) {
      if (waitUntil(isThere, std::chrono::milliseconds(300))) return true;
      strike({key::tab});
    }
    return false;
  }

  std::string descriptionOf(const std::string& name) {
    const auto thing = tool_.find(name);
    return thing ? thing->description : "";
  }

  testing::AssertionResult describes(const std::string& name, const std::string& words) {
    std::string found;
    if (waitUntil([&] { return (found = descriptionOf(name)) == words; })) return testing::AssertionSuccess();
    return testing::AssertionFailure() << name << " is described as '" << found << "'";
  }

  SessionBus bus_;
  AssistiveTool tool_{bus_};
};

TEST_P(AssistiveToolTest, EveryControlIsNamedAndWorksByKeysAndOverTheBus) {
  const xcb_window_t picture = stage_.painter().showColour({553, 313, 175, 175}, lightSkin);
  sink({picture});
  Launch launch = stage_.launch();
  launch.environment = {bus_.environment(), AssistiveTool::environment()};
  RunningVelicor velicor(launch);
  ASSERT_TRUE(stage_.shows(loupeCentre, onTheLine)) << velicor.log();
  EXPECT_TRUE(describes("Vectorscope", "100% on the skin line, 0% too green, 0% too pink, 0% without color"));
  EXPECT_TRUE(describes("RGB parade", "red 76% to 76%, green 59% to 59%, blue 51% to 51%"));
  stage_.painter().setColour(picture, 0xC29E82);
  EXPECT_TRUE(describes("Vectorscope", "0% on the skin line, 100% too green, 0% too pink, 0% without color"));
  stage_.painter().setColour(picture, middleGrey);
  EXPECT_TRUE(describes("Vectorscope", "0% on the skin line, 0% too green, 0% too pink, 100% without color"));

  ASSERT_TRUE(stage_.hasKeyboard("Velicor"));
  EXPECT_THAT(wayOfTab(),
              ElementsAre("push button Hide the scopes panel", "page tab Original", "page tab Skin", "page tab Exposure",
                          "check box Lock", "slider Overlay opacity", "combo box Frames per second",
                          "push button CHANGE COLORS", "push button Quit Velicor", "push button Menu"));
  ASSERT_TRUE(goTo("Lock"));
  strike({key::space});
  EXPECT_TRUE(stage_.shows(onFrameLine(loupeAtStart), frameGrey, frameTolerance + 10));
  EXPECT_TRUE(tool_.find("Lock")->checked);
  ASSERT_TRUE(goTo("Overlay opacity"));
  strike({key::home});
  EXPECT_TRUE(describes("Overlay opacity", "0%"));
  strike({key::end});
  strike({key::left}, 2);
  EXPECT_TRUE(describes("Overlay opacity", "98%"));
  ASSERT_TRUE(goTo("Frames per second"));
  strike({key::left});
  EXPECT_TRUE(describes("Frames per second", "15"));
  ASSERT_TRUE(goTo("Skin"));
  strike({key::right});
  EXPECT_TRUE(waitUntil([&] { return tool_.find("Exposure")->selected; }));
  ASSERT_TRUE(goTo("CHANGE COLORS"));
  strike({key::enter});
  ASSERT_TRUE(goTo("60% skin target"));
  EXPECT_TRUE(describes("60% skin target", "#EBD11A"));
  strike({key::enter});
  ASSERT_TRUE(goTo("B"));
  strike({key::home});
  strike({key::escape});
  EXPECT_TRUE(describes("60% skin target", "#EBD100"));
  EXPECT_TRUE(stage_.shows(loupeCentre, QColor(0xEB, 0xD1, 0), 4));

  tool_.press(*tool_.find("Skin"));
  EXPECT_TRUE(stage_.shows(loupeCentre, QColor::fromRgb(middleGrey), 2));
  tool_.setValue(*tool_.find("Overlay opacity"), 0.5);
  EXPECT_TRUE(describes("Overlay opacity", "50%"));
  strike({key::f6});
  EXPECT_TRUE(waitUntil([&] { return tool_.focused().value_or(AssistiveTool::Thing{}).name == "Loupe"; }));
  EXPECT_EQ(tool_.focused().value_or(AssistiveTool::Thing{}).description, "175 × 175 points, locked");
  EXPECT_EQ(velicor.terminate(), 0) << velicor.log();
}

INSTANTIATE_TEST_SUITE_P(, KeyboardTest,
                         testing::Values(Surroundings::noManager, Surroundings::windowManager,
                                         Surroundings::windowManagerAndCompositor),
                         [](const auto& test) { return nameOf(test.param); });
INSTANTIATE_TEST_SUITE_P(, AssistiveToolTest, testing::Values(Surroundings::windowManager),
                         [](const auto& test) { return nameOf(test.param); });

}  // namespace
}  // namespace velicor::test
