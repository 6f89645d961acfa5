// Off the screen and back: by the global shortcut, by starting the program again, and from the status area.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>

#include "program/footprint.h"
#include "program/stage.h"
#include "program/status_area.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

using namespace std::chrono_literals;

constexpr QColor ground(0x99, 0x99, 0x99);
constexpr int tolerance = 10;  // the line over whatever the root window is captured as

// The thread sanitizer has a thread of its own, which wakes ten times a second.
#ifdef __SANITIZE_THREAD__
constexpr long sanitizerWakes = 11;
#else
constexpr long sanitizerWakes = 0;
#endif

// How often each of the process's threads has been given the processor.
std::map<std::string, long> contextSwitches(qint64 process) {
  std::map<std::string, long> counts;
  for (const auto& thread :
       std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
    std::ifstream status(thread.path() / "status");
    for (std::string line; std::getline(status, line);) {
      if (line.find("ctxt_switches:") == std::string::npos) continue;
      counts[thread.path().filename()] += std::stol(line.substr(line.find(':') + 1));
    }
  }
  return counts;
}

// Threads that have ended since then count for nothing.
long switchesSince(std::map<std::string, long> before, qint64 process) {
  long sum = 0;
  for (const auto& [thread, count] : contextSwitches(process))
    sum += count - before[thread];
  return sum;
}

class HidingTest : public testing::Test {
 protected:
  HidingTest() { stage_.painter().setColour(stage_.painter().root(), 0x999999); }

  testing::AssertionResult isShown() {
    return stage_.shows(onFrameLine(loupeAtStart), frameYellow, tolerance);
  }
  testing::AssertionResult isHidden() { return stage_.shows(onFrameLine(loupeAtStart), ground); }
  void strikeShortcut() { stage_.mouse().strike({key::control, key::alt, key::super, key::s}); }

  Stage stage_{Surroundings::windowManager};
};

TEST_F(HidingTest, HiddenItCostsNothingAndTheShortcutBringsItBack) {
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(isShown()) << velicor.log();
  ASSERT_TRUE(velicor.waitForLog("no status area")) << velicor.log();
  strikeShortcut();
  ASSERT_TRUE(isHidden()) << velicor.log();
  waitUntil([] { return false; }, 1500ms);
  const auto before = contextSwitches(velicor.processID());
  const bool isLong = std::getenv("VELICOR_LONG_TESTS") != nullptr;
  const std::chrono::seconds hidden = isLong ? 60s : 6s;
  waitUntil([] { return false; }, hidden);
  const long switches = switchesSince(before, velicor.processID());
  RecordProperty("switches", static_cast<int>(switches));
  EXPECT_LE(switches, (isLong ? 19 : 2) + hidden.count() * sanitizerWakes) << "fewer than 20 a minute";
  for (int x = 300; x < 900; x += 7)
    stage_.mouse().moveTo({x, 400});
  EXPECT_LE(switchesSince(before, velicor.processID()), switches + 2 + sanitizerWakes) << "the mouse is nothing to it";
  strikeShortcut();
  EXPECT_TRUE(isShown()) << velicor.log();
  EXPECT_EQ(velicor.terminate(), 0);
}

// Each time as soon as both windows are there or gone.
TEST_F(HidingTest, TwoHundredTimesQuicklyLeaveNothingBehind) {
  Launch launch = stage_.launch();
  launch.environment = {"ASAN_OPTIONS=quarantine_size_mb=1"};  // which would keep what was freed
  RunningVelicor velicor(launch);
  ASSERT_TRUE(isShown()) << velicor.log();
  ASSERT_TRUE(velicor.waitForLog("update check failed")) << "the network's threads are there";
  constexpr DevicePoint panel{928, 770};
  constexpr QColor panelGround(0x1E, 0x1E, 0x1E);
  // Ends hidden.
  const auto showAndHide = [&](int times) {
    for (int i = 0; i < times; ++i) {
      strikeShortcut();
      ASSERT_TRUE(isShown() && stage_.shows(panel, panelGround)) << velicor.log();
      strikeShortcut();
      ASSERT_TRUE(isHidden() && stage_.shows(panel, ground)) << velicor.log();
    }
  };
  strikeShortcut();
  showAndHide(20);
  waitUntil([] { return false; }, 1s);
  const auto before = footprintOf(stage_, velicor);
  const auto more = [&] { return beyond(before, footprintOf(stage_, velicor)); };
  const long memory = residentMemory(velicor);
  showAndHide(200);
  waitUntil([&] { return more().empty(); });
  EXPECT_THAT(more(), testing::IsEmpty());
  const long growth = residentMemory(velicor) - memory;
  RecordProperty("growth", static_cast<int>(growth));
  EXPECT_LT(growth, 16384) << "kB; the address sanitizer takes a multiple";
  strikeShortcut();
  EXPECT_TRUE(isShown()) << velicor.log();
  EXPECT_TRUE(stage_.shows(panel, panelGround));
  EXPECT_EQ(velicor.terminate(), 0) << velicor.log();
}

TEST_F(HidingTest, ASecondStartBringsTheFirstBack) {
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(isShown()) << velicor.log();
  strikeShortcut();
  ASSERT_TRUE(isHidden());
  RunningVelicor second(stage_.launch());
  EXPECT_EQ(second.waitForExit(), 0) << second.log();
  EXPECT_EQ(second.log(), "");
  EXPECT_TRUE(isShown()) << velicor.log();
  EXPECT_EQ(velicor.terminate(), 0);
  RunningVelicor third(stage_.launch());
  EXPECT_TRUE(isShown()) << "the first one is gone: " << third.log();
}

// Another program's window for icons, of the older kind.
TEST_F(HidingTest, TheOlderTrayHasAnIconThatOpensTheMenu) {
  const Program tray({"trayer", "--edge", "bottom", "--align", "left", "--widthtype", "pixel", "--width",
                      "64", "--height", "24", "--tint", "0"},
                     stage_.launch().display);
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(isShown()) << velicor.log();
  // It has a window of ours in it, under the mouse.
  constexpr DevicePoint icon{12, 788};
  constexpr DevicePoint inTheMenu{60, 700};
  ASSERT_TRUE(waitUntil([&] {
    stage_.mouse().click(icon);
    return waitUntil(
        [&] { return stage_.windowAt(inTheMenu).height > 100 && stage_.windowAt(inTheMenu).height < 400; },
        500ms);
  })) << velicor.log();
  const DeviceRect menu = stage_.windowAt(inTheMenu);
  stage_.mouse().click({menu.x + 60, menu.y + 17});  // its first item
  EXPECT_TRUE(isHidden());
  EXPECT_EQ(velicor.log().find("no status area"), std::string::npos);
  EXPECT_EQ(velicor.terminate(), 0);
}

class StatusAreaTest : public HidingTest {
 protected:
  SessionBus bus_;
};

TEST_F(StatusAreaTest, TheIconComesWithAStatusAreaThatStartsLaterAndAgain) {
  Launch launch = stage_.launch();
  launch.environment = {bus_.environment()};
  RunningVelicor velicor(launch);
  ASSERT_TRUE(isShown()) << velicor.log();
  {
    StatusArea area(bus_.connection());
    ASSERT_TRUE(area.hasItem()) << velicor.log();
    EXPECT_EQ(area.property("Title").toString(), "Velicor");
    EXPECT_TRUE(area.property("ItemIsMenu").toBool());
    const auto pixmaps = qdbus_cast<QList<tray::IconPixmap>>(area.property("IconPixmap"));
    ASSERT_FALSE(pixmaps.isEmpty());
    EXPECT_EQ(pixmaps.front().argb.size(), pixmaps.front().width * pixmaps.front().height * 4);
    const auto menu = area.menu();
    ASSERT_GE(menu.size(), 7);
    EXPECT_EQ(menu[0].properties["label"], "Hide to Menu Bar");
    EXPECT_EQ(menu[2].properties["type"], "separator");
    EXPECT_EQ(menu[4].properties["toggle-state"], 1);
    area.choose(menu[0].id);
    EXPECT_TRUE(isHidden());
    area.choose(menu[0].id);  // as it was before: nothing
  }
  StatusArea again(bus_.connection());
  ASSERT_TRUE(again.hasItem()) << velicor.log();
  const auto menu = again.menu();
  EXPECT_EQ(menu[0].properties["label"], "Show Velicor");
  EXPECT_EQ(menu[4].properties["enabled"], false);
  again.choose(menu[0].id);
  EXPECT_TRUE(isShown()) << velicor.log();
  EXPECT_EQ(velicor.terminate(), 0);
}

}  // namespace
}  // namespace velicor::test
