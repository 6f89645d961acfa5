#include <gtest/gtest.h>

#include <thread>

#include "capture_harness.h"
#include "platform/x11/owned.h"
#include "support/main_loop.h"
#include "support/xfce_manager.h"

// What frames show, pixel by pixel, on private X servers.
namespace velicor::screencapture::test {
namespace {

using velicor::test::XfceManager;

enum class Managers { none, openbox, openboxAndPicom, xfwm4, xfwm4Composing };
constexpr const char* managersName[] = {"none", "openbox", "openboxAndPicom", "xfwm4", "xfwm4Composing"};

class CapturedPicture : public testing::TestWithParam<Managers> {
 protected:
  CapturedPicture() {
    const Managers managers = GetParam();
    if (managers == Managers::openbox || managers == Managers::openboxAndPicom) windowManager_.emplace(bench_.server);
    if (managers == Managers::openboxAndPicom) compositingManager_.emplace(bench_.server);
    if (managers == Managers::xfwm4) xfce_.emplace(bench_.server, XfceManager::Way::plain);
    if (managers == Managers::xfwm4Composing) xfce_.emplace(bench_.server, XfceManager::Way::composing);
  }

  Bench bench_;
  std::optional<velicor::test::WindowManager> windowManager_;
  std::optional<velicor::test::CompositingManager> compositingManager_;
  std::optional<XfceManager> xfce_;
};

// Another program's windows under an animated one of ours, which has a managed sibling: the region shows the
// backdrop, a window that was there before ours, and the inside of a larger one.
TEST_P(CapturedPicture, IsExactAndNeverShowsOurs) {
  const DeviceRect region{100, 100, 300, 200};
  const bool managed = GetParam() != Managers::none;
  bench_.other.setBackdrop({1});
  const xcb_window_t large = bench_.other.showPattern({250, 40, 400, 400}, {2}, {.managed = managed});
  const DevicePoint corner = bench_.other.origin(large);
  const DeviceRect largeRect{corner.x, corner.y, 400, 400};
  const DeviceRect front{150, 60, 130, 300};
  bench_.other.showPattern(front, {3});
  const Picture expected =
      patternAt(front, {3}, patternAt(largeRect, {2}, patternAt({0, 0, 1280, 800}, {1}, plain(0))));

  const xcb_window_t cover = coverWithOurs(bench_, {80, 80, 400, 300});
  if (managed) {
    const xcb_window_t panel = bench_.ours.makeWindow({300, 150, 200, 120}, {.managed = true});
    bench_.ours.setColour(panel, magenta);
    bench_.ours.map(panel);
  }
  const auto stream = bench_.start(region);
  for (int i = 0; i < 10; ++i) {
    bench_.ours.fill(cover, {i * 5, 0, 50, 200}, i % 2 ? magenta : 0xff01ff);
    bench_.other.fill(large, {largeRect.width - 5, 0, 5, 5}, static_cast<std::uint32_t>(i));
    std::this_thread::sleep_for(std::chrono::milliseconds(16));
  }
  bench_.receiver->waitForQuiet();
  const auto frames = bench_.receiver->frames();
  ASSERT_FALSE(frames.empty());
  for (const Frame& frame : frames)
    EXPECT_EQ(frame.count(magenta) + frame.count(0xff01ff), 0);
  EXPECT_EQ(frames.front().wrongPixels(expected, {100, 100}), 0);
  EXPECT_EQ(frames.back().wrongPixels(expected, {100, 100}), 0);
}

INSTANTIATE_TEST_SUITE_P(Under, CapturedPicture,
                         testing::Values(Managers::none, Managers::openbox, Managers::openboxAndPicom, Managers::xfwm4,
                                         Managers::xfwm4Composing),
                         [](const auto& test) { return managersName[static_cast<int>(test.param)]; });

// Every single change of the window stack is right in the first frame after it.
TEST(CaptureStream, FollowsEveryChangeInTheNextFrame) {
  Bench bench;
  const DeviceRect region{100, 100, 240, 160};
  const DevicePoint corner{100, 100};
  bench.other.setBackdrop({1});
  DeviceRect lowRect{120, 90, 120, 120};
  DeviceRect highRect{180, 130, 120, 140};
  const xcb_window_t low = bench.other.showPattern(lowRect, {2});
  const xcb_window_t high = bench.other.showPattern(highRect, {3});
  coverWithOurs(bench, {50, 50, 400, 400});
  const auto stream = bench.start(region, 60);
  const Picture backdrop = patternAt({0, 0, 1280, 800}, {1}, plain(0));

  const auto expectNext = [&](const char* what, const std::function<void()>& change,
                              const Picture& expected) {
    const std::size_t before = bench.receiver->waitForQuiet(std::chrono::milliseconds(120));
    change();
    const auto next = bench.receiver->framesFrom(before, 1);
    ASSERT_FALSE(next.empty()) << what;
    EXPECT_EQ(next.front().wrongPixels(expected, corner), 0) << what;
  };
  const auto lowUnderHigh = [&] { return patternAt(highRect, {3}, patternAt(lowRect, {2}, backdrop)); };
  const auto highUnderLow = [&] { return patternAt(lowRect, {2}, patternAt(highRect, {3}, backdrop)); };

  expectNext(
      "raise", [&] { bench.other.raise(low); }, highUnderLow());
  lowRect = {130, 110, 120, 120};
  expectNext(
      "move", [&] { bench.other.move(low, lowRect.x, lowRect.y); }, highUnderLow());
  lowRect = {130, 110, 90, 60};
  expectNext(
      "shrink", [&] { bench.other.resize(low, lowRect.width, lowRect.height); }, highUnderLow());
  lowRect = {130, 110, 170, 130};
  expectNext(
      "grow", [&] { bench.other.resize(low, lowRect.width, lowRect.height); }, highUnderLow());
  expectNext(
      "raise the other", [&] { bench.other.raise(high); }, lowUnderHigh());
  expectNext(
      "hide", [&] { bench.other.unmap(high); }, patternAt(lowRect, {2}, backdrop));
  expectNext(
      "show", [&] { bench.other.map(high); }, lowUnderHigh());
  const DeviceRect hole{20, 30, 40, 50};
  const DeviceRect shaped = hole.translatedBy(highRect.x, highRect.y);
  const Picture pattern3 = patternAt(highRect, {3}, plain(0));
  expectNext(
      "shape", [&] { bench.other.shape(high, hole); },
      [&](int x, int y) {
        return shaped.contains(DevicePoint{x, y}) ? pattern3(x, y) : patternAt(lowRect, {2}, backdrop)(x, y);
      });
  expectNext(
      "close", [&] { bench.other.destroy(high); }, patternAt(lowRect, {2}, backdrop));
  expectNext(
      "redraw after another program said that the window is gone",
      [&] {
        xcb_destroy_notify_event_t gone{};
        gone.response_type = XCB_DESTROY_NOTIFY;
        gone.event = bench.other.root();
        gone.window = low;
        xcb_send_event(bench.other.raw(), 0, bench.other.root(), XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&gone));
        bench.other.setPattern(low, {4});
      },
      patternAt(lowRect, {4}, backdrop));
  expectNext(
      "close the last", [&] { bench.other.destroy(low); }, backdrop);
  expectNext(
      "new backdrop", [&] { bench.other.setBackdrop({5}); }, patternAt({0, 0, 1280, 800}, {5}, plain(0)));
}

TEST(CaptureStream, ShowsBordersAndBlackBeyondTheDisplay) {
  Bench bench;
  const DeviceRect inner{-30, 20, 200, 100};
  bench.other.showPattern({inner.x - 7, inner.y - 7, inner.width, inner.height}, {2},
                          {.border = 7, .borderColour = 0x123456});
  const auto stream = bench.start({-50, -10, 300, 160});
  const auto frames = bench.receiver->framesFrom(0, 1);
  ASSERT_FALSE(frames.empty());
  const DeviceRect outer{inner.x - 7, inner.y - 7, inner.width + 14, inner.height + 14};
  const DeviceRect screen{0, 0, 1280, 800};
  const Picture expected = [&](int x, int y) -> std::uint32_t {
    if (!screen.contains(DevicePoint{x, y}) || !outer.contains(DevicePoint{x, y})) return 0;
    return inner.contains(DevicePoint{x, y}) ? Pattern{2}.at(x - inner.x, y - inner.y) : 0x123456;
  };
  EXPECT_EQ(frames.front().wrongPixels(expected, {-50, -10}), 0);
}

// A program that hangs can't repaint what our window uncovers or covers.
TEST(CaptureStream, ShowsWhatAHungProgramHadDrawn) {
  Bench bench;
  const DeviceRect place{100, 100, 200, 200};
  velicor::test::Painter painter(bench.server, place, 6);
  painter.freeze();
  coverWithOurs(bench, {50, 50, 300, 300});
  const auto stream = bench.start({100, 100, 200, 200});
  const auto frames = bench.receiver->framesFrom(0, 1);
  ASSERT_FALSE(frames.empty());
  EXPECT_EQ(frames.front().wrongPixels(patternAt(place, {6}, plain(0)), {100, 100}), 0);
  painter.kill();
}

TEST(CaptureStream, StaysExactWhenACompositingManagerComesAndGoes) {
  Bench bench;
  const DeviceRect place{90, 90, 220, 220};
  const xcb_window_t window = bench.other.showPattern(place, {2});
  coverWithOurs(bench, {50, 50, 300, 300});
  const auto stream = bench.start({100, 100, 200, 200});
  const auto expectExactAfterDrawing = [&](int seed) {
    const std::size_t before = bench.receiver->complete();
    bench.other.setPattern(window, {seed});
    const Picture expected = patternAt(place, {seed}, plain(0));
    EXPECT_TRUE(bench.receiver->waitForFrame(before, [&](const Frame& frame) {
      return frame.wrongPixels(expected, {100, 100}) == 0;
    })) << seed;
  };
  expectExactAfterDrawing(3);
  for (int round = 0; round < 2; ++round) {
    velicor::test::CompositingManager manager(bench.server);
    expectExactAfterDrawing(4 + round * 2);
    manager.terminate();
    ASSERT_TRUE(bench.other.waitForSelectionOwner("_NET_WM_CM_S0", false));
    expectExactAfterDrawing(5 + round * 2);
  }
  for (const Frame& frame : bench.receiver->frames())
    EXPECT_EQ(frame.count(magenta), 0);
}

// A new manager takes every frame apart and makes its own, and the last one composes.
TEST(CaptureStream, StaysExactWhileManagersReplaceEachOther) {
  Bench bench;
  const velicor::test::WindowManager first(bench.server);
  const xcb_window_t window = bench.other.showPattern({100, 100, 300, 250}, {2}, {.managed = true});
  coverWithOurs(bench, {150, 150, 150, 150});
  const DeviceRect region{160, 160, 160, 120};
  const auto stream = bench.start(region);
  const auto frameOf = [&] {
    const x11::Owned<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(bench.other.raw(), xcb_query_tree(bench.other.raw(), window), nullptr));
    return tree->parent;
  };
  xcb_window_t frame = frameOf();
  int seed = 2;
  const auto expectExactInANewFrame = [&](const char* manager) {
    EXPECT_TRUE(velicor::test::waitUntil([&] { return frameOf() != frame && frameOf() != bench.other.root(); }))
        << manager;
    frame = frameOf();
    bench.other.setPattern(window, {++seed});
    EXPECT_TRUE(velicor::test::waitUntil([&] {
      const DevicePoint corner = bench.other.origin(window);
      const Picture picture = patternAt({corner.x, corner.y, 300, 250}, {seed}, plain(0));
      return bench.receiver->frames().back().wrongPixels(picture, {region.x, region.y}) == 0;
    })) << manager;
  };
  bench.receiver->framesFrom(0, 1);
  const velicor::test::WindowManager second(bench.server, {"openbox", "--replace", "--sm-disable"});
  expectExactInANewFrame("openbox");
  const XfceManager third(bench.server, XfceManager::Way::composingInstead);
  expectExactInANewFrame("xfwm4");
  for (const Frame& each : bench.receiver->frames())
    EXPECT_EQ(each.count(magenta), 0);
}

// 32-bit windows: as the server shows them. Half-transparent white is blended only where someone blends.
TEST(CaptureStream, BlendsOnlyUnderACompositingManager) {
  Bench bench;
  bench.other.setBackdrop({1});
  const xcb_window_t window = bench.other.makeWindow({100, 100, 100, 100}, {.alpha = true});
  bench.other.setColour(window, 0x80808080);  // premultiplied
  bench.other.map(window);
  const auto stream = bench.start({100, 100, 100, 100});
  EXPECT_TRUE(
      bench.receiver->waitForFrame(0, [](const Frame& frame) { return frame.count(0x808080) == 100 * 100; }));
  const velicor::test::CompositingManager manager(bench.server);
  const auto blended = [](const Frame& frame) {
    const Picture backdrop = patternAt({0, 0, 1280, 800}, {1}, plain(0));
    for (int i = 0; i < 100; ++i) {
      const std::uint32_t under = backdrop(100 + i, 100 + i) & 0xff;
      const std::uint32_t got = frame.pixels[static_cast<std::size_t>(i * 101)] & 0xff;
      const int wanted = 0x80 + static_cast<int>(under) * 0x7f / 0xff;
      if (std::abs(static_cast<int>(got) - wanted) > 1) return false;
    }
    return true;
  };
  EXPECT_TRUE(bench.receiver->waitForFrame(0, blended));
}

TEST(CaptureStream, LeavesWindowsOutByTheFilterOnly) {
  Bench bench;
  const DeviceRect place{100, 100, 200, 200};
  const velicor::test::Painter painter(bench.server, place, 6);
  const auto stream = bench.start({100, 100, 200, 200}, 30, false);
  coverWithOurs(bench, {150, 150, 50, 50});
  const auto hasMagenta = [](const Frame& frame) { return frame.count(magenta) == 50 * 50; };
  EXPECT_TRUE(bench.receiver->waitForFrame(0, hasMagenta));

  std::size_t before = bench.receiver->waitForQuiet();
  ASSERT_TRUE(Bench::await(stream->updateContentFilter(bench.filter(true))));
  auto next = bench.receiver->framesFrom(before, 1);
  ASSERT_FALSE(next.empty());
  EXPECT_EQ(next.front().wrongPixels(patternAt(place, {6}, plain(0)), {100, 100}), 0);

  // Another process, by what the server knows of it; ours comes back.
  before = bench.receiver->waitForQuiet();
  ContentFilter filter = bench.filter(false);
  filter.excludedApplications.push_back({painter.processID(), {}});
  ASSERT_TRUE(Bench::await(stream->updateContentFilter(filter)));
  next = bench.receiver->framesFrom(before, 1);
  ASSERT_FALSE(next.empty());
  EXPECT_EQ(next.front().count(magenta), 50 * 50);
  EXPECT_EQ(next.front().count(0), 200 * 200 - 50 * 50);
}

TEST(CaptureStream, WorksWithoutSharedMemory) {
  Bench bench("640x480x24", {"-extension", "MIT-SHM"});
  const DeviceRect place{10, 10, 300, 300};
  bench.other.showPattern(place, {2});
  const auto stream = bench.start({50, 50, 100, 80});
  const auto frames = bench.receiver->framesFrom(0, 1);
  ASSERT_FALSE(frames.empty());
  EXPECT_EQ(frames.front().wrongPixels(patternAt(place, {2}, plain(0)), {50, 50}), 0);
}

// Ten bits a channel come out as the same eight.
TEST(CaptureStream, DecodesAThirtyBitScreen) {
  Bench bench("640x480x30");
  const DeviceRect place{10, 10, 300, 300};
  bench.other.setBackdrop({1});
  bench.other.showPattern(place, {2});
  coverWithOurs(bench, {100, 100, 40, 40});
  const auto channel = [](std::uint32_t pixel, int shift) { return static_cast<int>(pixel >> shift & 0xff); };
  const Picture expected = patternAt(place, {2}, patternAt({0, 0, 640, 480}, {1}, plain(0)));
  for (const DeviceRect& region : {DeviceRect{50, 50, 100, 80}, DeviceRect{200, 200, 200, 200}}) {
    const Frame frame = bench.freshFrame(region);
    int wrong = 0;
    for (std::size_t i = 0; i < frame.pixels.size(); ++i) {
      const auto at = static_cast<int>(i);
      const std::uint32_t wanted = expected(region.x + at % frame.width, region.y + at / frame.width);
      for (const int shift : {0, 8, 16})
        wrong += std::abs(channel(frame.pixels[i], shift) - channel(wanted, shift)) > 1;
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_FALSE(frame.pixels.empty());
  }
}

// Other pixel layouts are converted by the server.
TEST(CaptureStream, DecodesASixteenBitScreen) {
  Bench bench("640x480x16");
  const xcb_window_t window = bench.other.makeWindow({0, 0, 300, 300});
  bench.other.setColour(window, 0xf81f);  // all red, no green, all blue
  bench.other.map(window);
  const auto stream = bench.start({50, 50, 100, 80});
  EXPECT_TRUE(
      bench.receiver->waitForFrame(0, [](const Frame& frame) { return frame.count(0xff00ff) == 100 * 80; }));
}

}  // namespace
}  // namespace velicor::screencapture::test
