// Hours of work: a moving picture at 30 frames a second while the loupe is moved, resized, hidden and shown,
// and its mode and colours change. What the program holds must not grow. VELICOR_LONG_TESTS in the
// environment: two hours and a line of figures a minute, else some ten seconds.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <string>

#include <QDeadlineTimer>
#include <QTimer>

#include "program/footprint.h"
#include "program/stage.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t lightSkin = 0xC29682;
constexpr QColor onTheLine(0xFF, 0xF2, 0x00);
constexpr QColor inTheHeatmap(0xED, 0xC5, 0x18);

// The panel fills the screen's height at its right edge: its top-left corner is at (920, 0).
constexpr DevicePoint panelGround{928, 770};
constexpr DevicePoint originalTab{990, 71}, skinTab{1100, 71}, exposureTab{1209, 71};
constexpr DevicePoint changeColors{1000, 673};
constexpr DevicePoint firstWell{954, 699};

// The popover of the first well.
constexpr DevicePoint popoverGround{850, 640};
constexpr DevicePoint whitePreset{866, 520}, yellowPreset{941, 520}, orangePreset{966, 520};
constexpr DevicePoint cancelButton{973, 658}, okButton{1034, 658};

constexpr unsigned cursorShapes = 7;

class EnduranceTest : public testing::Test {
 protected:
  EnduranceTest() : ground_(stage_.painter().showColour({0, 0, 1280, 800}, lightSkin)) {
    stage_.painter().lower(ground_);
    stage_.painter().sync();
    QObject::connect(&picture_, &QTimer::timeout, [this] {
      stage_.painter().fill(ground_, {300, 335, 420, 10}, ++frame_ * 0x030507 % 0xFFFFFF);
    });
    picture_.start(20ms);
  }

  Robot& hand() { return stage_.mouse(); }
  testing::AssertionResult loupeShows(QColor color) { return stage_.shows(loupeCentre, color, 2); }
  testing::AssertionResult isLoupe(const DeviceRect& rect) { return isAt(leftBandOf(rect), rect); }

  testing::AssertionResult isAt(DevicePoint place, const DeviceRect& rect) {
    if (stage_.takesMouse(rect, place)) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "no loupe at " << rect.x << ", " << rect.y;
  }

  void dragLoupe(const DeviceRect& from, DevicePoint grip, int dx, int dy, const DeviceRect& to) {
    hand().moveTo(grip);
    ASSERT_TRUE(isAt(grip, from));
    hand().drag(grip, {grip.x + dx, grip.y + dy});
    ASSERT_TRUE(isLoupe(to));
  }

  void moveAndResize() {
    const DeviceRect moved = loupeAtStart.translatedBy(-200, -40);
    dragLoupe(loupeAtStart, moveChipOf(loupeAtStart), -200, -40, moved);
    const DeviceRect grown{moved.x, moved.y, moved.width + 60, moved.height + 90};
    dragLoupe(moved, {moved.right() - 5, moved.bottom() - 5}, 60, 90, grown);
    dragLoupe(grown, {grown.right() - 5, grown.bottom() - 5}, -60, -90, moved);
    dragLoupe(moved, moveChipOf(moved), 200, 40, loupeAtStart);
  }

  void changeModes() {
    hand().click(exposureTab);
    ASSERT_TRUE(loupeShows(inTheHeatmap));
    hand().click(originalTab);
    ASSERT_TRUE(loupeShows(QColor::fromRgb(lightSkin)));
    hand().click(skinTab);
    ASSERT_TRUE(loupeShows(onTheLine));
  }

  void pick(DevicePoint preset, QColor color) {
    hand().click(preset);
    ASSERT_TRUE(loupeShows(color));
  }

  void changeColours() {
    ASSERT_TRUE(stage_.shows(firstWell, onTheLine));
    hand().click(firstWell);
    ASSERT_TRUE(stage_.shows(popoverGround, QColor(0x1E, 0x1E, 0x1E)));
    ASSERT_NO_FATAL_FAILURE(pick(whitePreset, Qt::white));
    ASSERT_NO_FATAL_FAILURE(pick(orangePreset, QColor(0xFF, 0x7A, 0x00)));
    const bool keeps = ++picks_ % 2 == 0;
    if (keeps) {
      ASSERT_NO_FATAL_FAILURE(pick(yellowPreset, onTheLine));
    }
    hand().click(keeps ? okButton : cancelButton);
    ASSERT_TRUE(stage_.shows(popoverGround, QColor::fromRgb(lightSkin)));
    ASSERT_TRUE(loupeShows(onTheLine));
  }

  void hideAndShow() {
    for (const bool shown : {false, true}) {
      hand().strike({key::control, key::alt, key::super, key::s});
      ASSERT_TRUE(loupeShows(shown ? onTheLine : QColor::fromRgb(lightSkin)));
      ASSERT_TRUE(stage_.shows(panelGround, shown ? QColor(0x1E, 0x1E, 0x1E) : QColor::fromRgb(lightSkin)));
    }
  }

  void round() {
    ASSERT_NO_FATAL_FAILURE(moveAndResize());
    ASSERT_NO_FATAL_FAILURE(changeModes());
    ASSERT_NO_FATAL_FAILURE(changeColours());
    ASSERT_NO_FATAL_FAILURE(hideAndShow());
    ++rounds_;
    // And some frames of nothing but the moving picture.
    waitUntil([] { return false; }, 1s);
  }

  // Whole rounds, at least one.
  void work(std::chrono::milliseconds length) {
    const QDeadlineTimer end(length);
    do
      ASSERT_NO_FATAL_FAILURE(round());
    while (!end.hasExpired());
  }

  std::map<std::string, unsigned> lastingFootprint(const RunningVelicor& velicor) const {
    auto counts = footprintOf(stage_, velicor);
    counts.erase("CURSOR");
    counts.erase("ShmSeg");
    return counts;
  }

  Stage stage_{Surroundings::windowManager};
  xcb_window_t ground_;
  QTimer picture_;
  std::uint32_t frame_ = 0;
  int picks_ = 0;
  int rounds_ = 0;
};

int framesIn(const std::string& log) {
  constexpr std::string_view name = "captured=";
  int sum = 0;
  for (std::size_t at = log.find(name); at != std::string::npos; at = log.find(name, at + 1))
    sum += std::stoi(log.substr(at + name.size()));
  return sum;
}

TEST_F(EnduranceTest, WhatTheProgramHoldsDoesNotGrow) {
  const bool isLong = std::getenv("VELICOR_LONG_TESTS") != nullptr;
  const std::chrono::minutes length = isLong ? 120min : 0min;
  Launch launch = stage_.launch();
  launch.environment = {"ASAN_OPTIONS=quarantine_size_mb=1", "VELICOR_STATS=1"};
  RunningVelicor velicor(launch);
  ASSERT_TRUE(loupeShows(onTheLine)) << velicor.log();
  ASSERT_TRUE(velicor.waitForLog("update check failed")) << "the network's threads are there";
  ASSERT_TRUE(stage_.shows(panelGround, QColor(0x1E, 0x1E, 0x1E)));
  ASSERT_TRUE(waitUntil([&] {
    hand().click(changeColors);
    return bool(stage_.shows(firstWell, onTheLine, 0, 5s));
  }));

  ASSERT_NO_FATAL_FAILURE(work(isLong ? 5min : 0min)) << velicor.log();
  ASSERT_NO_FATAL_FAILURE(round()) << velicor.log();
  const auto before = lastingFootprint(velicor);
  const unsigned segments = footprintOf(stage_, velicor)["ShmSeg"];
  const long memory = residentMemory(velicor);
  for (int minute = 0; minute == 0 || minute < length.count(); ++minute) {
    ASSERT_NO_FATAL_FAILURE(work(isLong ? 1min : 0min)) << velicor.log();
    if (!isLong) continue;
    std::cerr << "minute " << minute + 1 << ": " << rounds_ << " rounds, " << framesIn(velicor.log())
              << " frames, " << residentMemory(velicor) << " kB";
    for (const auto& [name, count] : footprintOf(stage_, velicor))
      std::cerr << ", " << count << " " << name;
    std::cerr << std::endl;
  }
  waitUntil([&] { return lastingFootprint(velicor) == before; });
  EXPECT_EQ(lastingFootprint(velicor), before);
  EXPECT_LE(footprintOf(stage_, velicor)["CURSOR"], cursorShapes)
      << "one for each shape, from when it is first shown";
  EXPECT_LE(footprintOf(stage_, velicor)["ShmSeg"], segments + 1)
      << "the capture takes its last one when all others are held, and keeps it";
  const long growth = residentMemory(velicor) - memory;
  RecordProperty("growth", static_cast<int>(growth));
  RecordProperty("frames", framesIn(velicor.log()));
  EXPECT_LT(growth, 8192) << "kB";
  EXPECT_EQ(velicor.terminate(), 0) << velicor.log();
}

}  // namespace
}  // namespace velicor::test
