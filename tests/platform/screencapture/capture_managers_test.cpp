#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <unistd.h>

#include "capture_harness.h"
#include "platform/screencapture/x11/window_stack.h"
#include "support/main_loop.h"
#include "support/xfce_manager.h"

// What managers decide about windows by properties: whether they show, how strongly, and how much of a frame.
namespace velicor::screencapture::test {
namespace {

constexpr auto compositor = "_NET_WM_CM_S0";
constexpr std::uint32_t frameColour = 0xffffff;  // in no pattern

class CaptureUnderManagers : public testing::Test {
 protected:
  CaptureUnderManagers() { bench_.other.setBackdrop({1}); }

  static Picture within(const DeviceRect& part, Picture inside, Picture outside) {
    return [=](int x, int y) { return part.contains(DevicePoint{x, y}) ? inside(x, y) : outside(x, y); };
  }

  Bench bench_;
  const DeviceRect region_{80, 80, 260, 220};
  const DevicePoint corner_{80, 80};
  const Picture backdrop_ = patternAt({0, 0, 1280, 800}, {1}, plain(0));
};

TEST_F(CaptureUnderManagers, ShowsWhatIsPaintedOfAComposedFrame) {
  XClient& other = bench_.other;
  // The frame has an unpainted margin of 10 pixels around a border of 10 and a title of 20.
  const DeviceRect frameRect{100, 100, 200, 160};
  const DeviceRect clientRect{120, 130, 160, 110};
  const DeviceRect painted{110, 110, 180, 140};
  const xcb_window_t client = other.makeWindow({0, 0, clientRect.width, clientRect.height});
  other.setPattern(client, {2});
  const xcb_window_t frame = other.frame(client, frameRect, {20, 30}, frameColour);
  other.setNumbers(client, "_NET_FRAME_EXTENTS", {10, 10, 20, 10});
  const Picture content = patternAt(clientRect, {2}, plain(frameColour));

  const auto stream = bench_.start(region_);
  EXPECT_TRUE(bench_.shows(within(frameRect, content, backdrop_), corner_, [] {}))
      << "as the server shows it";
  EXPECT_TRUE(
      bench_.shows(within(painted, content, backdrop_), corner_, [&] { other.takeSelection(compositor); }));

  const DeviceRect hole{150, 150, 60, 50};
  const Picture rim = within(clientRect, backdrop_, plain(frameColour));
  EXPECT_TRUE(bench_.shows(within(hole, content, within(painted, rim, backdrop_)), corner_,
                           [&] { other.shape(client, hole.translatedBy(-clientRect.x, -clientRect.y)); }));

  other.move(frame, frameRect.x + 15, frameRect.y + 25);
  other.resize(frame, frameRect.width, frameRect.height - 20);
  other.resize(client, clientRect.width, clientRect.height - 20);
  other.move(client, 20, 40);
  other.setNumbers(client, "_NET_FRAME_EXTENTS", {10, 10, 30, 0});
  const DeviceRect clientThen{135, 165, 160, 90};
  const DeviceRect paintedThen{125, 135, 180, 120};
  const DeviceRect holeThen = hole.translatedBy(15, 35);
  const Picture contentThen = patternAt(clientThen, {2}, plain(frameColour));
  const Picture rimThen = within(clientThen, backdrop_, plain(frameColour));
  EXPECT_TRUE(
      bench_.shows(within(holeThen, contentThen, within(paintedThen, rimThen, backdrop_)), corner_, [] {}));
  EXPECT_EQ(bench_.freshFrame(region_), bench_.receiver->frames().back());
}

TEST_F(CaptureUnderManagers, LeavesOutWhatIsKeptBack) {
  XClient& other = bench_.other;
  const DeviceRect place{120, 120, 100, 100};
  const xcb_window_t window = other.showPattern(place, {2});
  const Picture shown = patternAt(place, {2}, backdrop_);
  const auto stream = bench_.start(region_);
  const auto becomes = [&](const Picture& picture, const std::function<void()>& change) {
    return bench_.shows(picture, corner_, change);
  };
  EXPECT_TRUE(becomes(backdrop_,
                      [&] { other.setNumber(window, "_NET_WM_STATE", other.atom("_NET_WM_STATE_HIDDEN")); }));
  EXPECT_TRUE(becomes(shown, [&] { other.clear(window, "_NET_WM_STATE"); }));
  EXPECT_TRUE(becomes(backdrop_,
                      [&] { other.setNumber(window, "_NET_WM_STATE", other.atom("_NET_WM_STATE_HIDDEN")); }));
  EXPECT_TRUE(becomes(shown, [&] {
    other.setNumbers(window, "_NET_WM_STATE",
                     {other.atom("_NET_WM_STATE_HIDDEN"), other.atom("_NET_WM_STATE_SHADED")});
  })) << "rolled up to its title bar";

  // Other desktops' windows stay mapped only where the window manager itself composes the screen.
  other.setNumber(other.root(), "_NET_SUPPORTING_WM_CHECK", other.makeWindow({0, 0, 1, 1}));
  bench_.ours.takeSelection(compositor);
  other.setNumber(other.root(), "_NET_CURRENT_DESKTOP", 0);
  other.setNumber(window, "_NET_WM_DESKTOP", 1);
  EXPECT_EQ(bench_.freshFrame(region_).wrongPixels(shown, corner_), 0);
  EXPECT_TRUE(becomes(backdrop_, [&] { other.takeSelection(compositor); }));
  EXPECT_TRUE(becomes(shown, [&] { other.setNumber(other.root(), "_NET_CURRENT_DESKTOP", 1); }));
  EXPECT_TRUE(becomes(backdrop_, [&] { other.setNumber(other.root(), "_NET_CURRENT_DESKTOP", 0); }));
  EXPECT_TRUE(becomes(shown, [&] { other.setNumber(window, "_NET_WM_DESKTOP", everyDesktop); }));

  const xcb_window_t guard = other.makeWindow({0, 0, 1280, 800});
  other.setTitle(guard, "some guard window");
  EXPECT_TRUE(becomes(backdrop_, [&] { other.map(guard); }));
  EXPECT_TRUE(becomes(shown, [&] { other.lower(guard); }));
}

TEST_F(CaptureUnderManagers, BlendsByTheOpacityThatManagersKeep) {
  XClient& other = bench_.other;
  const DeviceRect place{0, 0, 600, 600};
  const xcb_window_t window = other.showPattern(place, {2});
  const auto stream = bench_.start(region_);
  bench_.receiver->waitForQuiet();
  other.setNumber(window, "_NET_WM_WINDOW_OPACITY", 0x40000000);
  bench_.receiver->waitForQuiet();
  EXPECT_EQ(bench_.receiver->frames().back().wrongPixels(patternAt(place, {2}, plain(0)), corner_), 0);

  const auto blended = [&](const Frame& frame) {
    for (std::size_t i = 0; i < frame.pixels.size(); ++i) {
      const int x = corner_.x + static_cast<int>(i) % frame.width;
      const int y = corner_.y + static_cast<int>(i) / frame.width;
      for (const int shift : {0, 8, 16}) {
        const auto channel = [shift](std::uint32_t pixel) { return static_cast<int>(pixel >> shift & 0xff); };
        const int wanted = (channel(Pattern{2}.at(x, y)) + 3 * channel(backdrop_(x, y)) + 2) / 4;
        if (std::abs(channel(frame.pixels[i]) - wanted) > 2) return false;
      }
    }
    return true;
  };
  other.takeSelection(compositor);
  EXPECT_TRUE(bench_.receiver->waitForFrame(0, blended));
  const std::size_t before = bench_.receiver->complete();
  other.releaseSelection(compositor);
  EXPECT_TRUE(bench_.receiver->waitForFrame(before, [&](const Frame& frame) {
    return frame.wrongPixels(patternAt(place, {2}, plain(0)), corner_) == 0;
  }));
}

// Whatever frames a manager makes, and however it tiles or stacks: the picture is what the server shows. Without a
// command it is xfwm4.
class CaptureUnderAnyManager : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(CaptureUnderAnyManager, ShowsWhatTheServerShows) {
  Bench bench;
  std::optional<velicor::test::WindowManager> manager;
  std::optional<velicor::test::XfceManager> xfce;
  if (GetParam().empty()) {
    xfce.emplace(bench.server, velicor::test::XfceManager::Way::plain);
  } else {
    manager.emplace(bench.server, GetParam());
  }
  const DeviceRect all{0, 0, 1280, 800};
  bench.other.setBackdrop({1});
  const xcb_window_t first = bench.other.showPattern({100, 100, 300, 200}, {2}, {.managed = true});
  const auto stream = bench.start(all);
  const auto isTheScreen = [&](const Frame& frame) { return frame.pixels == bench.other.screenImage(all); };
  const auto follows = [&](const char* what) {
    const std::size_t settled = bench.receiver->waitForQuiet();
    EXPECT_TRUE(bench.receiver->waitForFrame(settled - std::min<std::size_t>(settled, 1), isTheScreen))
        << what;
    // A manager may still be drawing its frame.
    EXPECT_TRUE(velicor::test::waitUntil([&] { return isTheScreen(bench.freshFrame(all)); })) << what;
  };
  follows("a window that was there");
  const xcb_window_t second = bench.other.showPattern({250, 150, 300, 200}, {3}, {.managed = true});
  bench.other.shape(second, {20, 30, 200, 100});
  follows("a shaped one that is new");
  bench.other.resize(first, 350, 250);
  bench.other.raise(first);
  follows("resized and raised");
  bench.other.unmap(second);
  follows("withdrawn");
}

INSTANTIATE_TEST_SUITE_P(Are, CaptureUnderAnyManager,
                         testing::Values(std::vector<std::string>{"openbox", "--sm-disable"},
                                         std::vector<std::string>{"i3", "-c", "/dev/null"},
                                         std::vector<std::string>{}),
                         [](const auto& test) { return test.param.empty() ? "xfwm4" : test.param.front(); });

// The panel of another program, which takes a window of ours in. A manager keeps it, or there is none.
class CapturedPanel : public testing::TestWithParam<bool> {};

TEST_P(CapturedPanel, StaysWhenItTakesOurIcon) {
  Bench bench;
  std::optional<velicor::test::WindowManager> manager;
  if (GetParam()) manager.emplace(bench.server);
  bench.other.setBackdrop({1});
  const velicor::test::Program panel({"trayer", "--edge", "bottom", "--align", "left", "--widthtype", "pixel",
                                      "--width", "160", "--heighttype", "pixel", "--height", "48"},
                                     bench.server.name());
  ASSERT_TRUE(bench.other.waitForSelectionOwner("_NET_SYSTEM_TRAY_S0", true));
  const DeviceRect region{0, 720, 200, 80};
  const auto stream = bench.start(region);
  const auto isTheScreen = [&](const Frame& frame) {
    return frame.count(magenta) > 0 && frame.pixels == bench.other.screenImage(region);
  };
  const xcb_window_t icon = bench.ours.makeWindow({0, 0, 24, 24});
  bench.ours.setColour(icon, magenta);
  bench.ours.dock(icon);
  const std::size_t settled = bench.receiver->waitForQuiet();
  EXPECT_TRUE(bench.receiver->waitForFrame(settled - std::min<std::size_t>(settled, 1), isTheScreen));
  EXPECT_TRUE(isTheScreen(bench.freshFrame(region)));
}

INSTANTIATE_TEST_SUITE_P(Of, CapturedPanel, testing::Bool(),
                         [](const auto& test) { return test.param ? "openbox" : "nobody"; });

// A workspace on each monitor: both are to be seen, though only one of them counts as the current one.
TEST(CaptureOnTwoMonitors, ShowsTheWindowWhicheverMonitorIsInUse) {
  Bench bench;
  const std::string settings = testing::TempDir() + "velicor-i3-" + std::to_string(getpid());
  std::ofstream(settings) << "# i3 config file (v4)\nfake-outputs 640x800+0+0,640x800+640+0\n";
  const velicor::test::WindowManager manager(bench.server, {"i3", "-c", settings});
  std::filesystem::remove(settings);
  bench.other.goToDesktop(0);
  const xcb_window_t window = bench.other.showPattern({0, 0, 300, 200}, {2}, {.managed = true});
  const DevicePoint corner = bench.other.origin(window);
  const DeviceRect region{corner.x + 50, corner.y + 50, 200, 150};
  const Picture picture = patternAt({corner.x, corner.y, 600, 600}, {2}, plain(0));
  const auto stream = bench.start(region);
  bench.receiver->framesFrom(0, 1);
  for (unsigned move = 1; move <= 10; ++move) {
    bench.other.goToDesktop(move % 2);
    ASSERT_EQ(bench.freshFrame(region).wrongPixels(picture, {region.x, region.y}), 0) << move;
  }
  bench.receiver->waitForQuiet();
  for (const Frame& frame : bench.receiver->frames())
    EXPECT_EQ(frame.wrongPixels(picture, {region.x, region.y}), 0);
}

}  // namespace
}  // namespace velicor::screencapture::test
