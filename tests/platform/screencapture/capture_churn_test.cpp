#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <optional>
#include <thread>

#include "capture_harness.h"

// A program that changes its windows 200 times a second in every way there is, held still now and then: the
// model that has followed all its events must then show what the server shows and what a service shows that
// has just begun. VELICOR_LONG_TESTS in the environment: ten seconds and twenty comparisons, else three and
// six.
namespace velicor::screencapture::test {
namespace {

using namespace std::chrono_literals;

constexpr DeviceRect region{20, 20, 560, 400};
constexpr DeviceRect coverRect{250, 0, 500, 500};  // hides the right part of the region from the screen

struct Extent {
  int rounds;
  std::chrono::milliseconds each;
};

Extent extent() {
  if (std::getenv("VELICOR_LONG_TESTS")) return {20, 500ms};
  return {6, 400ms};
}

class CaptureUnderChurn : public testing::TestWithParam<bool> {
 protected:
  CaptureUnderChurn() {
    bench_.other.setBackdrop({1});
    if (!managed()) return;
    windowManager_.emplace(bench_.server);
    compositingManager_.emplace(bench_.server);
  }

  static bool managed() { return GetParam(); }

  // Pixels beside our window that are not as on the screen.
  int unlikeTheScreen(const Frame& frame) {
    const auto screen = bench_.other.screenImage(region);
    int wrong = 0;
    for (std::size_t i = 0; i < frame.pixels.size(); ++i) {
      const int x = region.x + static_cast<int>(i) % region.width;
      if (x < coverRect.x && frame.pixels[i] != screen.at(i)) ++wrong;
    }
    return wrong;
  }

  // What the server keeps for our connections, by kind. Without the frames' memory: a stream takes up to
  // three segments when it needs them, and keeps them.
  std::map<std::string, unsigned> resources() {
    const x11::ClientSet own = bench_.own.snapshot();
    auto counts = bench_.other.resources([&own](std::uint32_t base) { return own.made(base); });
    EXPECT_LE(counts["ShmSeg"], 3U);
    counts.erase("ShmSeg");
    return counts;
  }

  Bench bench_;
  std::optional<velicor::test::WindowManager> windowManager_;
  std::optional<velicor::test::CompositingManager> compositingManager_;
};

TEST_P(CaptureUnderChurn, NeverDriftsFromTheServer) {
  coverWithOurs(bench_, coverRect);
  const auto stream = bench_.start(region);
  bench_.receiver->waitForQuiet();
  const auto before = resources();
  {
    velicor::test::Churner churner(bench_.server, managed() ? 2 : 1, managed());
    for (int round = 0; round < extent().rounds; ++round) {
      std::this_thread::sleep_for(extent().each);
      churner.freeze();
      bench_.other.sync();
      bench_.receiver->waitForQuiet();
      const Frame followed = bench_.receiver->frames().back();
      EXPECT_EQ(bench_.freshFrame(region), followed) << "round " << round;
      // A compositing manager draws shadows that are in no window.
      if (!managed()) {
        EXPECT_EQ(unlikeTheScreen(followed), 0) << "round " << round;
      }
      churner.resume();
    }
  }
  for (const Frame& frame : bench_.receiver->frames())
    EXPECT_EQ(frame.count(magenta), 0);
  bench_.receiver->waitForQuiet();
  EXPECT_EQ(resources(), before);
}

INSTANTIATE_TEST_SUITE_P(Managed, CaptureUnderChurn, testing::Bool());

}  // namespace
}  // namespace velicor::screencapture::test
