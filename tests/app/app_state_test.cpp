#include "app/app_state.h"

#include <limits>

#include "app/app_state_fixture.h"
#include "platform/gpu/native/native_device.h"
#include "support/main_loop.h"

namespace velicor {
namespace {

using namespace std::chrono_literals;
using settings::List;
using settings::Value;
using testing::ElementsAre;
using testing::Optional;
using Mode = MetalProcessor::Mode;

using AppStateTest = test::AppStateFixture;

Palette otherPalette() {
  Palette palette;
  palette.skinOn = {0, 0, 1};
  palette.heat[3] = {1, 1, 1};
  return Palette(palette.stored());
}

TEST_F(AppStateTest, StartsWithTheDefaultsAndWritesNothing) {
  EXPECT_EQ(state().mode(), Mode::skin);
  EXPECT_FALSE(state().locked());
  EXPECT_EQ(state().opacity(), 1.0);
  EXPECT_EQ(state().fps(), 15);
  EXPECT_EQ(state().palette(), Palette::standard());
  EXPECT_EQ(state().regionText(), "");
  EXPECT_EQ(state().processor->scopeDivider, 2);
  EXPECT_EQ(state().capture.fps(), 15);
  EXPECT_EQ(settings.value("mode"), std::nullopt);
  EXPECT_EQ(clock.waiting(), 0u);
}

TEST_F(AppStateTest, ChangesAreAppliedSavedAndFoundAtTheNextStart) {
  state().setMode(Mode::exposure);
  state().setLocked(true);
  state().setOpacity(0);
  state().setFps(30);
  state().setPalette(otherPalette());
  for (const char* when : {"at once", "restarted"}) {
    SCOPED_TRACE(when);
    EXPECT_EQ(state().mode(), Mode::exposure);
    EXPECT_TRUE(state().locked());
    EXPECT_EQ(state().opacity(), 0);
    EXPECT_EQ(state().fps(), 30);
    EXPECT_EQ(state().palette(), otherPalette());
    EXPECT_EQ(state().processor->mode, Mode::exposure);
    EXPECT_FALSE(state().processor->previewEnabled);
    EXPECT_EQ(state().processor->scopeDivider, 3);
    EXPECT_EQ(state().capture.fps(), 30);
    restarted();
  }
}

TEST_F(AppStateTest, StoredValuesThatDoNotFitLeaveTheDefaults) {
  const auto integer = [](std::int64_t value) { return Value(value); };
  const std::vector<std::string> colors = otherPalette().stored();
  const List shortened(colors.begin(), colors.begin() + 10);
  List mixed(colors.begin(), colors.end());
  mixed[4] = integer(3);
  const std::pair<const char*, Value> unfit[] = {
      {"mode", integer(-1)},      {"mode", integer(std::int64_t{1} << 32)},
      {"mode", Value(2.0)},       {"mode", Value(false)},
      {"mode", Value("2")},       {"fps", integer(20)},
      {"fps", Value(30.0)},       {"fps", integer((std::int64_t{1} << 32) + 30)},
      {"opacity", Value(false)},  {"opacity", Value("0.5")},
      {"locked", integer(1)},     {"locked", Value("true")},
      {"palette", shortened},     {"palette", mixed},
      {"palette", Value("#000000")}};
  for (const auto& [key, stored] : unfit) {
    SCOPED_TRACE(key);
    settings.setValue(key, stored);
    EXPECT_EQ(restarted().mode(), Mode::skin);
    EXPECT_EQ(state().fps(), 15);
    EXPECT_EQ(state().opacity(), 1);
    EXPECT_FALSE(state().locked());
    EXPECT_EQ(state().palette(), Palette::standard());
    settings.remove(key);
  }
  EXPECT_THAT(log.lines(), testing::IsEmpty());
}

TEST_F(AppStateTest, AStoredOpacityIsClamped) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const auto& [stored, expected] :
       {std::pair(0.25, 0.25), std::pair(2.5, 1.0), std::pair(-0.3, 0.0), std::pair(infinity, 1.0),
        std::pair(std::numeric_limits<double>::quiet_NaN(), 0.0)}) {
    settings.setReal("opacity", stored);
    EXPECT_EQ(restarted().opacity(), expected) << stored;
  }
  settings.setInteger("opacity", 0);
  EXPECT_EQ(restarted().opacity(), 0);
}

TEST_F(AppStateTest, WatchersHearOfEveryChangeBeforeItIsStored) {
  std::vector<int> seen;
  const Subscription watching = state().willChange.subscribe([&] { seen.push_back(state().fps()); });
  state().setFps(30);
  state().setFps(10);
  state().setLocked(true);
  state().loupeFrameChanged({0, 0, 10, 10});
  EXPECT_THAT(seen, ElementsAre(15, 30, 10, 10));
}

TEST_F(AppStateTest, FramesAreAnalysedAndTheResultsAnnounced) {
  captureFrame();
  expectPreview(true);
  captureFrame();  // at 15 frames a second the scopes follow every second one
  EXPECT_TRUE(test::waitUntil([&] { return scopesAnnounced == 1; }));
  EXPECT_EQ(previewsAnnounced, 2);
}

TEST_F(AppStateTest, ChangesShowOnTheLastFrameWithoutANewOne) {
  captureFrame();
  state().setMode(Mode::original);
  expectPreview(false);
  state().setMode(Mode::exposure);
  expectPreview(true);
  state().setOpacity(0);
  expectPreview(false);
  state().setOpacity(0.1);
  expectPreview(true);
  const int before = previewsAnnounced;
  state().setPalette(otherPalette());
  EXPECT_TRUE(test::waitUntil([&] { return previewsAnnounced > before; }));
}

TEST_F(AppStateTest, WithoutAProcessorTheSettingsStillWork) {
  hasProcessor = false;
  state().applyRestoredSettings();
  state().setMode(Mode::exposure);
  state().setOpacity(0.5);
  state().setFps(10);
  state().setPalette(otherPalette());
  captureFrame();
  test::settle();
  EXPECT_EQ(previewsAnnounced, 0);
  EXPECT_EQ(restarted().mode(), Mode::exposure);
}

TEST_F(AppStateTest, RestoredSettingsAreHandedOnWithoutSaving) {
  state().processor->mode = Mode::original;
  state().processor->previewEnabled = false;
  state().applyRestoredSettings();
  EXPECT_EQ(state().processor->mode, Mode::skin);
  EXPECT_TRUE(state().processor->previewEnabled);
  EXPECT_EQ(settings.value("mode"), std::nullopt);
}

TEST_F(AppStateTest, TheLoupeIsCapturedOnTheScreenThatShowsMostOfIt) {
  state().loupeFrameChanged({900, 100, 201, 100});
  test::settle();
  EXPECT_EQ(service->lastStream().filter.display.displayID, 8u);
  EXPECT_EQ(service->lastStream().configurations.front().sourceRect, (DisplayRect{0, 600, 101, 100}));
  EXPECT_THAT(settings.integer("mode"), Optional(1));

  state().loupeFrameChanged({900, 100, 200, 100});  // half on each: the one listed first
  test::settle();
  EXPECT_EQ(service->lastStream().filter.display.displayID, 7u);

  state().loupeFrameChanged({1500, 100, 200, 100});
  state().loupeFrameChanged({5000, 5000, 200, 100});  // on none: the first
  test::settle();
  EXPECT_EQ(service->lastStream().filter.display.displayID, 7u);
}

TEST_F(AppStateTest, WithoutAListOfScreensTheMainOneIsTaken) {
  const desktop::Screen right = screens.list.back();
  screens.list.clear();
  state().loupeFrameChanged({0, 0, 200, 100});
  test::settle();
  EXPECT_THAT(service->journal, testing::IsEmpty());
  EXPECT_EQ(state().regionText(), "");
  EXPECT_EQ(settings.value("mode"), std::nullopt);
  screens.main = right;
  state().loupeFrameChanged({0, 0, 200, 100});
  test::settle();
  EXPECT_EQ(service->lastStream().filter.display.displayID, 8u);
}

TEST_F(AppStateTest, TheRegionIsWrittenInWholePoints) {
  state().loupeFrameChanged({0, 0, 640, 360});
  EXPECT_EQ(state().regionText(), "640 × 360");
  state().loupeFrameChanged({0, 0, 300.7, 200.2});
  EXPECT_EQ(state().regionText(), "300 × 200");
}

}  // namespace
}  // namespace velicor
