// The loupe on a screen of two monitors, one of which comes and goes, and on one that changes.
#include <gtest/gtest.h>

#include "program/screen_settings.h"
#include "program/stage.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

// The left one has room for the loupe beside the scopes panel.
constexpr DeviceRect leftMonitor{0, 0, 920, 800};
constexpr DeviceRect rightMonitor{920, 0, 360, 800};
constexpr std::uint32_t lightSkin = 0xC29682;
constexpr std::uint32_t middleGrey = 0x999999;
constexpr QColor onTheLine(0xFF, 0xF2, 0x00);
const DeviceRect middleOfLeft = loupeAtStart.translatedBy(-180, 0);

class LoupeOnMonitorsTest : public testing::Test {
 protected:
  LoupeOnMonitorsTest() {
    stage_.painter().defineMonitor("left", leftMonitor, true);
    stage_.painter().defineMonitor("right", rightMonitor, false);
    stage_.painter().showColour({0, 0, 1280, 800}, middleGrey);
    patch_ = stage_.painter().showColour({0, 0, 20, 20}, lightSkin);
  }

  // The loupe answers for what lies there now, in place: a patch of skin in its part of the monitor, to the pixel.
  testing::AssertionResult answersIn(const DeviceRect& loupe, const DeviceRect& monitor) {
    const DeviceRect part = loupe.intersection(monitor);
    const DevicePoint corner{part.x + part.width / 2 - 10, part.y + 60};
    stage_.painter().move(patch_, corner.x, corner.y);
    testing::AssertionResult shown = stage_.shows(corner, onTheLine);
    if (shown) shown = stage_.shows({corner.x + 19, corner.y + 19}, onTheLine);
    if (shown) shown = stage_.shows({corner.x - 1, corner.y}, QColor::fromRgb(middleGrey));
    return shown ? stage_.shows({corner.x + 20, corner.y}, QColor::fromRgb(middleGrey)) : shown;
  }

  testing::AssertionResult isAt(const DeviceRect& window, DevicePoint place) {
    if (waitUntil([&] { return stage_.windowAt(place) == window; })) return testing::AssertionSuccess();
    const DeviceRect found = stage_.windowAt(place);
    return testing::AssertionFailure() << found.width << " x " << found.height << " at " << found.x << ", " << found.y;
  }

  // By its move chip, to where its corner is then.
  DeviceRect drag(const DeviceRect& loupe, DevicePoint corner) {
    const DevicePoint chip = moveChipOf(loupe);
    stage_.mouse().moveTo(chip);
    EXPECT_TRUE(stage_.takesMouse(loupe, chip));
    const DeviceRect moved = loupe.translatedBy(corner.x - loupe.x, corner.y - loupe.y);
    stage_.mouse().drag(chip, moveChipOf(moved));
    return moved;
  }

  // These are the displays that the last captures began on, in order. Frames come before the log tells of them.
  testing::AssertionResult startedOn(RunningVelicor& velicor, const std::vector<std::string>& displays) {
    std::string expected;
    std::string told;
    for (const std::string& name : displays) expected += std::to_string(stage_.painter().atom(name)) + " ";
    const bool started = waitUntil([&] {
      const std::string log = velicor.log();
      const std::string begin = "capture running on display ";
      told.clear();
      for (std::size_t at = log.find(begin); at != std::string::npos; at = log.find(begin, at + 1)) {
        told += std::to_string(std::stoul(log.substr(at + begin.size()))) + " ";
      }
      return told.ends_with(expected);
    });
    if (started) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "started on " << told << "instead of " << expected << "\n" << velicor.log();
  }

  Stage stage_{Surroundings::noManager};
  xcb_window_t patch_ = 0;
};

TEST_F(LoupeOnMonitorsTest, TheCaptureIsOnTheMonitorThatHasMostOfTheLoupe) {
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(answersIn(middleOfLeft, leftMonitor)) << velicor.log();
  const DeviceRect right = drag(middleOfLeft, {1000, 120});
  EXPECT_TRUE(answersIn(right, rightMonitor)) << velicor.log();
  const DeviceRect astride = drag(right, {840, 500});
  const DeviceRect left = drag(drag(astride, {820, 500}), {300, 500});
  EXPECT_TRUE(answersIn(left, leftMonitor)) << velicor.log();
  EXPECT_TRUE(answersIn(drag(left, {-60, 700}), leftMonitor)) << "beyond two edges: " << velicor.log();
  EXPECT_TRUE(startedOn(velicor, {"left", "right", "left"})) << "moved on a monitor, started anew on the other";
}

TEST_F(LoupeOnMonitorsTest, AMonitorMayGoAndComeBackUnderTheLoupe) {
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(answersIn(middleOfLeft, leftMonitor)) << velicor.log();
  DeviceRect loupe = drag(middleOfLeft, {1000, 120});
  ASSERT_TRUE(answersIn(loupe, rightMonitor)) << velicor.log();

  stage_.painter().deleteMonitor("right");
  EXPECT_TRUE(startedOn(velicor, {"left"}));
  EXPECT_TRUE(answersIn(middleOfLeft, leftMonitor)) << velicor.log();

  stage_.painter().defineMonitor("right", rightMonitor, false);
  loupe = drag(middleOfLeft, {1000, 120});
  EXPECT_TRUE(answersIn(loupe, rightMonitor)) << velicor.log();

  // Plugged in elsewhere: another monitor in the same place.
  xcb_grab_server(stage_.painter().raw());
  stage_.painter().deleteMonitor("right");
  stage_.painter().defineMonitor("new", rightMonitor, false);
  xcb_ungrab_server(stage_.painter().raw());
  stage_.painter().sync();
  EXPECT_TRUE(startedOn(velicor, {"new"}));
  EXPECT_TRUE(answersIn(loupe, rightMonitor)) << velicor.log();
  EXPECT_EQ(velicor.terminate(), 0);
}

TEST_F(LoupeOnMonitorsTest, TheResolutionMayChange) {
  stage_.painter().deleteMonitor("left");
  stage_.painter().deleteMonitor("right");
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(answersIn(loupeAtStart, {0, 0, 1280, 800})) << velicor.log();
  // Beside the scopes panel, whatever the resolution.
  const DeviceRect low = drag(loupeAtStart, {440, 610});
  ASSERT_TRUE(isAt(low, moveChipOf(low)));
  // Places count from the lower edge.
  setResolution(stage_.painter(), 1024, 600);
  EXPECT_TRUE(answersIn({440, 410, 175, 175}, {0, 0, 1024, 600})) << velicor.log();
  EXPECT_TRUE(isAt({664, 0, 360, 600}, {1000, 590}));
  setResolution(stage_.painter(), 1280, 800);
  EXPECT_TRUE(answersIn(low, {0, 0, 1280, 800})) << velicor.log();
  // Where there is no screen any more.
  const DeviceRect stranded = drag(low, {480, 10});
  ASSERT_TRUE(isAt(stranded, moveChipOf(stranded)));
  setResolution(stage_.painter(), 1024, 600);
  EXPECT_TRUE(answersIn({425, 213, 175, 175}, {0, 0, 1024, 600})) << velicor.log();
  EXPECT_EQ(velicor.terminate(), 0);
}

}  // namespace
}  // namespace velicor::test
