#include "app/app_state.h"

#include <cmath>
#include <functional>
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

struct StoredSetting {
  const char* key;
  Value stored;
  std::function<void(const AppState&)> check;
};

class AppStateRestoreTest : public test::AppStateFixture,
                            public testing::WithParamInterface<StoredSetting> {};

TEST_P(AppStateRestoreTest, TakesWhatFitsAndIgnoresTheRest) {
  settings.setValue(GetParam().key, GetParam().stored);
  GetParam().check(state());
  EXPECT_THAT(log.lines(), testing::IsEmpty());
}

Value integer(std::int64_t value) { return Value(value); }

StoredSetting mode(Value stored, Mode expected) {
  return {"mode", std::move(stored),
          [expected](const AppState& state) { EXPECT_EQ(state.mode(), expected); }};
}

StoredSetting fps(Value stored, int expected) {
  return {"fps", std::move(stored), [expected](const AppState& state) { EXPECT_EQ(state.fps(), expected); }};
}

StoredSetting opacity(Value stored, double expected) {
  return {"opacity", std::move(stored),
          [expected](const AppState& state) { EXPECT_EQ(state.opacity(), expected); }};
}

StoredSetting locked(Value stored, bool expected) {
  return {"locked", std::move(stored),
          [expected](const AppState& state) { EXPECT_EQ(state.locked(), expected); }};
}

StoredSetting palette(Value stored, const Palette& expected) {
  return {"palette", std::move(stored),
          [expected](const AppState& state) { EXPECT_EQ(state.palette(), expected); }};
}

List storedPalette(std::size_t colors) {
  const std::vector<std::string> strings = otherPalette().stored();
  return {strings.begin(), strings.begin() + static_cast<std::ptrdiff_t>(colors)};
}

List paletteWithANumber() {
  List list = storedPalette(11);
  list[4] = integer(3);
  return list;
}

INSTANTIATE_TEST_SUITE_P(Mode, AppStateRestoreTest,
                         testing::Values(mode(integer(0), Mode::original), mode(integer(2), Mode::exposure),
                                         mode(integer(3), Mode::skin), mode(integer(-1), Mode::skin),
                                         mode(integer(std::int64_t{1} << 32), Mode::skin),
                                         mode(Value(2.0), Mode::skin), mode(Value(false), Mode::skin),
                                         mode(Value("2"), Mode::skin)));
INSTANTIATE_TEST_SUITE_P(Fps, AppStateRestoreTest,
                         testing::Values(fps(integer(10), 10), fps(integer(30), 30), fps(integer(20), 15),
                                         fps(Value(30.0), 15),
                                         fps(integer((std::int64_t{1} << 32) + 30), 15)));
INSTANTIATE_TEST_SUITE_P(Opacity, AppStateRestoreTest,
                         testing::Values(opacity(Value(0.25), 0.25), opacity(integer(0), 0),
                                         opacity(Value(2.5), 1), opacity(Value(-0.3), 0),
                                         opacity(Value(std::numeric_limits<double>::quiet_NaN()), 0),
                                         opacity(Value(std::numeric_limits<double>::infinity()), 1),
                                         opacity(Value(false), 1), opacity(Value("0.5"), 1)));
INSTANTIATE_TEST_SUITE_P(Locked, AppStateRestoreTest,
                         testing::Values(locked(Value(true), true), locked(integer(1), false),
                                         locked(Value("true"), false)));
INSTANTIATE_TEST_SUITE_P(Palette, AppStateRestoreTest,
                         testing::Values(palette(storedPalette(11), otherPalette()),
                                         palette(storedPalette(10), Palette::standard()),
                                         palette(paletteWithANumber(), Palette::standard()),
                                         palette(Value("#000000"), Palette::standard())));

TEST_F(AppStateTest, SettingTheSameValueAgainAppliesAndSavesItAgain) {
  captureFrame();
  settings.remove("fps");
  const int before = previewsAnnounced;
  state().setMode(Mode::skin);
  EXPECT_TRUE(test::waitUntil([&] { return previewsAnnounced > before; }));
  EXPECT_THAT(settings.integer("fps"), Optional(15));
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
  EXPECT_NE(state().processor->vectorscope(), nullptr);
}

TEST_F(AppStateTest, WithoutOpacityThereIsNoPreviewUntilItComesBack) {
  captureFrame();
  expectPreview(true);
  state().setOpacity(0);
  expectPreview(false);
  state().setOpacity(0.1);
  expectPreview(true);
}

TEST_F(AppStateTest, AModeOrPaletteIsShownOnTheLastFrameWithoutANewOne) {
  captureFrame();
  expectPreview(true);
  state().setMode(Mode::original);
  expectPreview(false);
  state().setMode(Mode::exposure);
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
  EXPECT_EQ(service->lastStream().configurations.front().minimumFrameInterval.timescale, 15);
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

TEST_F(AppStateTest, TheSharedStateIsMadeOnceFromWhatIsInstalled) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  const auto askTooEarly = [] {
    log::setSink({});
    AppState::shared();
  };
  EXPECT_DEATH(askTooEarly(), "before its environment was installed");
  const AppState::Installation installation(environment());
  AppState::shared().setFps(30);
  EXPECT_EQ(&AppState::shared(), &AppState::shared());
  EXPECT_EQ(AppState::shared().fps(), 30);
}

}  // namespace
}  // namespace velicor
