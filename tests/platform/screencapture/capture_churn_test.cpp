#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <thread>

#include "capture_harness.h"
#include "support/log_recorder.h"
#include "support/main_loop.h"

// Programs that change their windows in every way there is, all the time, under a loupe that moves. Held
// still now and then: the model that has followed all their events must then show what the server shows and
// what a service shows that has just begun. VELICOR_LONG_TESTS in the environment: ten minutes instead of
// seconds.
namespace velicor::screencapture::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

bool isLong() { return std::getenv("VELICOR_LONG_TESTS") != nullptr; }

enum class Managers { none, window, windowAndCompositing };

std::string nameOf(Managers managers) {
  if (managers == Managers::none) return "NoManager";
  return managers == Managers::window ? "WindowManager" : "BothManagers";
}

class CaptureInAStorm : public testing::TestWithParam<Managers> {
 protected:
  CaptureInAStorm() {
    bench_.other.setBackdrop({1});
    if (GetParam() != Managers::none) windowManager_.emplace(bench_.server);
    if (isComposited()) compositingManager_.emplace(bench_.server);
  }

  static bool isComposited() { return GetParam() == Managers::windowAndCompositing; }

  static DeviceRect loupe() { return {20, 20, 560, 400}; }

  // The loupe is moved and resized at random, as fast as a mouse does it.
  DeviceRect moveLoupe(Stream& stream, xcb_window_t cover, std::chrono::milliseconds duration) {
    DeviceRect place = loupe();
    for (const auto end = Clock::now() + duration; Clock::now() < end; std::this_thread::sleep_for(16ms)) {
      if (pick(4) == 0) {
        place.width = 60 + pick(500);
        place.height = 60 + pick(380);
        bench_.ours.resize(cover, place.width, place.height);
      }
      place.x = pick(700 - place.width);
      place.y = pick(500 - place.height);
      bench_.ours.move(cover, place.x, place.y);
      EXPECT_TRUE(Bench::await(stream.updateConfiguration(Bench::configuration(place))));
    }
    bench_.ours.raise(cover);
    return place;
  }

  // What the server itself makes of all windows but ours. A compositing manager draws shadows that are in no
  // window.
  std::vector<std::uint32_t> screenWithout(xcb_window_t cover, const DeviceRect& place) {
    bench_.ours.unmap(cover);
    const auto pixels = bench_.other.screenImage(place);
    bench_.ours.map(cover);
    return pixels;
  }

  // The managers may still be at work.
  testing::AssertionResult isRight(xcb_window_t cover, const DeviceRect& place) {
    Frame followed;
    Frame fresh;
    bool isScreen = true;
    const bool right = velicor::test::waitUntil([&] {
      bench_.receiver->waitForQuiet();
      if (!isComposited()) {
        const auto screen = screenWithout(cover, place);
        bench_.receiver->waitForQuiet();
        isScreen = bench_.receiver->last().pixels == screen;
      }
      followed = bench_.receiver->last();
      fresh = bench_.freshFrame(place);
      return isScreen && fresh == followed;
    });
    if (right) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << (isScreen ? "" : "unlike the screen ") << (fresh == followed ? "" : "unlike a fresh one ")
           << fresh.width << " x " << fresh.height << ", followed " << followed.width << " x "
           << followed.height;
  }

  // What the server keeps for some of the capture's connections, by kind. Without the frames' memory: a stream takes
  // up to three segments when it needs them, and keeps them. Nor the loupe's window: the server divides the
  // bytes of its pixmap among all who have it, a compositing manager too.
  std::map<std::string, unsigned> resources(const std::function<bool(std::uint32_t base)>& isMeant) {
    const std::uint32_t loupes = xcb_get_setup(bench_.ours.raw())->resource_id_base;
    auto counts = bench_.other.resources([&](std::uint32_t base) { return base != loupes && isMeant(base); });
    EXPECT_LE(counts["ShmSeg"], 3U);
    counts.erase("ShmSeg");
    // The server redirects the overlay of a compositing manager that comes later, but none that is there.
    if (isComposited()) counts.erase("CompositeClientWindow");
    return counts;
  }

  // Nothing is left of the windows that have gone. The window manager's own may have become more.
  void keepsWhatAFreshOneKeeps() {
    const x11::ClientSet old = bench_.own.snapshot();
    const auto fresh = bench_.startFresh(loupe());
    const x11::ClientSet all = bench_.own.snapshot();
    const auto ofOld = [&] { return resources([&](std::uint32_t base) { return old.made(base); }); };
    const auto ofFresh = [&] {
      return resources([&](std::uint32_t base) { return all.made(base) && !old.made(base); });
    };
    EXPECT_TRUE(velicor::test::waitUntil([&] { return ofOld() == ofFresh(); }));
    EXPECT_EQ(ofOld(), ofFresh());
    EXPECT_TRUE(Bench::await(fresh.stream->stopCapture()));
  }

  int pick(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }

  const velicor::test::LogRecorder log_;
  Bench bench_;
  std::optional<velicor::test::WindowManager> windowManager_;
  std::optional<velicor::test::CompositingManager> compositingManager_;
  std::mt19937 random_{3};
};

TEST_P(CaptureInAStorm, NeverDriftsFromTheServer) {
  const xcb_window_t cover = coverWithOurs(bench_, loupe());
  const auto stream = bench_.start(loupe());
  ASSERT_FALSE(bench_.receiver->framesFrom(0, 3).empty());
  std::size_t frames = 0;
  int rounds = 0;
  {
    velicor::test::Churner churner(bench_.server, 1 + static_cast<int>(GetParam()),
                                   windowManager_.has_value(), {});
    const auto end = Clock::now() + (isLong() ? 600s : 3s);
    for (; Clock::now() < end && !HasFailure(); ++rounds) {
      const DeviceRect place = moveLoupe(*stream, cover, isLong() ? 800ms : 500ms);
      churner.freeze();
      bench_.other.sync();
      EXPECT_TRUE(isRight(cover, place)) << "round " << rounds;
      churner.resume();
      const auto taken = bench_.receiver->take();
      frames += taken.size();
      // The server lets windows without a background begin with what the screen shows, ours too. Managers
      // make such frames, and paint them a moment later.
      for (const Frame& frame : taken)
        EXPECT_TRUE(windowManager_ || frame.count(magenta) == 0);
    }
  }
  bench_.ours.resize(cover, loupe().width, loupe().height);
  EXPECT_TRUE(Bench::await(stream->updateConfiguration(Bench::configuration(loupe()))));
  keepsWhatAFreshOneKeeps();
  EXPECT_EQ(log_.lines(), std::vector<std::string>());
  std::cout << rounds << " settled pictures, " << frames << " frames\n";
}

INSTANTIATE_TEST_SUITE_P(With, CaptureInAStorm,
                         testing::Values(Managers::none, Managers::window, Managers::windowAndCompositing),
                         [](const auto& test) { return nameOf(test.param); });

// A window that hides everything is there for a moment only, each time in a brighter colour, at any time of a
// frame. With and without another one on top of it.
TEST(CaptureOfVanishingWindows, ShowsThemWholeOrNotAtAll) {
  for (const bool topped : {false, true}) {
    Bench bench;
    constexpr DeviceRect all{0, 0, 400, 300};
    constexpr DeviceRect corner{0, 0, 10, 10};
    constexpr std::uint32_t ground = 0x100000;
    const std::uint32_t batch = isLong() ? 10'000 : 400;
    std::uint32_t brightest = 1;
    bench.other.showColour(all, ground);
    const xcb_window_t top = topped ? bench.other.showColour(corner, ground) : xcb_window_t{XCB_NONE};
    const auto stream = bench.start({5, 5, 200, 150}, 250);
    std::mt19937 random(5);
    const auto showAndDestroy = [&](std::uint32_t blue) {
      const xcb_window_t window = bench.other.makeWindow(all);
      bench.other.setColour(window, blue);
      const std::uint32_t beneath[] = {top, XCB_STACK_MODE_BELOW};
      if (topped) {
        xcb_configure_window(bench.other.raw(), window,
                             XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE, beneath);
      }
      bench.other.map(window);
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 1000));
      bench.other.destroy(window);
    };
    const auto seenSoFar = [&] {
      std::set<std::uint32_t> colors;
      for (const Frame& frame : bench.receiver->frames())
        colors.insert(frame.pixels.back());
      return colors.size();
    };
    // A busy machine captures few of them.
    do {
      for (const std::uint32_t end = brightest + batch; brightest < end; ++brightest)
        showAndDestroy(brightest);
    } while (seenSoFar() < 20 && brightest < 50 * batch);
    const auto isGround = [](const Frame& frame) {
      return frame.count(ground) == frame.width * frame.height;
    };
    EXPECT_TRUE(bench.receiver->waitForFrame(0, isGround));
    std::uint32_t last = 0;
    std::set<std::uint32_t> seen;
    for (const Frame& frame : bench.receiver->take()) {
      const std::uint32_t colour = frame.pixels.back();
      // The other window is its own colour, or under this one still.
      EXPECT_GE(frame.count(colour), frame.width * frame.height - 5 * 5)
          << "a part of " << std::hex << colour;
      if (colour == ground) continue;
      EXPECT_TRUE(colour >= std::max(last, 1U) && colour < brightest) << colour << " after " << last;
      last = colour;
      seen.insert(colour);
    }
    std::cout << seen.size() << " windows seen of " << brightest << "\n";
    EXPECT_GT(seen.size(), 10U);
  }
}

}  // namespace
}  // namespace velicor::screencapture::test
