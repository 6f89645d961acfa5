#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <thread>

#include <unistd.h>

#include "capture_harness.h"
#include "platform/base/product.h"

// When frames come, and how streams start and end, on private X servers.
namespace velicor::screencapture::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// Calls at an even pace.
void repeat(Clock::duration total, Clock::duration each, const std::function<void(int)>& job) {
  const auto start = Clock::now();
  for (int i = 0; i * each < total; ++i) {
    std::this_thread::sleep_until(start + i * each);
    job(i);
  }
}

TEST(CaptureTiming, TwoMoreFramesFollowEveryStartChangeAndConfiguration) {
  Bench bench;
  const xcb_window_t window = bench.other.showPattern({100, 100, 300, 300}, {2});
  const auto stream = bench.start({150, 150, 100, 100});
  EXPECT_EQ(bench.receiver->waitForQuiet(), 3u);
  bench.other.fill(window, {60, 60, 4, 4}, 0xffffff);
  EXPECT_EQ(bench.receiver->waitForQuiet(), 6u);
  ASSERT_TRUE(Bench::await(stream->updateConfiguration(Bench::configuration({150, 150, 100, 100}, 15))));
  EXPECT_EQ(bench.receiver->waitForQuiet(), 9u);
  const auto frames = bench.receiver->frames();
  ASSERT_EQ(frames.size(), 9u);
  EXPECT_EQ(frames[0], frames[2]);
  EXPECT_EQ(frames[3], frames[8]);
  EXPECT_FALSE(frames[2] == frames[3]);
}

// Our own drawing, drawing outside the region and drawing under an opaque window are no reason for a frame.
TEST(CaptureTiming, NothingNewGivesNoFrames) {
  Bench bench;
  const xcb_window_t beneath = bench.other.showPattern({100, 100, 300, 300}, {4});
  const xcb_window_t window = bench.other.showPattern({100, 100, 300, 300}, {2});
  const xcb_window_t cover = coverWithOurs(bench, {120, 120, 200, 200});
  const auto stream = bench.start({150, 150, 100, 100});
  const std::size_t before = bench.receiver->waitForQuiet();
  repeat(1500ms, 16ms, [&](int i) {
    const auto colour = static_cast<std::uint32_t>(i);
    bench.ours.fill(cover, {0, 0, 200, 200}, magenta - colour % 2);
    bench.ours.move(cover, 120 + i % 3, 120);
    bench.other.fill(window, {0, 0, 20, 20}, colour);
    bench.other.fill(beneath, {60, 60, 20, 20}, colour);
  });
  EXPECT_EQ(bench.receiver->waitForQuiet(), before);
}

TEST(CaptureTiming, EveryChangeOfAQuickSuccessionArrives) {
  Bench bench;
  const xcb_window_t window = bench.other.showColour({100, 100, 300, 300}, 0);
  coverWithOurs(bench, {120, 120, 200, 200});
  const auto stream = bench.start({150, 150, 50, 50});
  // Each as soon as the one before has arrived; more of them where VELICOR_LONG_TESTS is in the environment.
  const std::uint32_t changes = std::getenv("VELICOR_LONG_TESTS") ? 900 : 40;
  std::size_t first = bench.receiver->waitForQuiet();
  for (std::uint32_t i = 1; i <= changes; ++i) {
    bench.other.fill(window, {50, 50, 50, 50}, i);
    ASSERT_TRUE(bench.receiver->waitForFrame(first, [&](const Frame& frame) {
      return frame.count(i) == 50 * 50;
    })) << i;
    first = bench.receiver->complete();
  }
}

TEST(CaptureStream, MovesItsRectangleExactly) {
  Bench bench;
  const DeviceRect place{50, 50, 700, 500};
  bench.other.showPattern(place, {2});
  coverWithOurs(bench, {100, 100, 300, 300});
  const auto stream = bench.start({100, 100, 64, 48}, 60);
  std::vector<DeviceRect> asked{{100, 100, 64, 48}};
  for (int i = 1; i <= 20; ++i) {
    asked.push_back({100 + 7 * i, 100 + 5 * i, 64 + 3 * i, 48 + 2 * i});
    ASSERT_TRUE(Bench::await(stream->updateConfiguration(Bench::configuration(asked.back(), 60))));
    std::this_thread::sleep_for(8ms);
  }
  bench.receiver->waitForQuiet();
  const Picture picture = patternAt(place, {2}, plain(0));
  const auto frames = bench.receiver->frames();
  for (const Frame& frame : frames) {
    const auto rect = std::find_if(asked.begin(), asked.end(), [&](const DeviceRect& each) {
      return each.width == frame.width && each.height == frame.height;
    });
    ASSERT_NE(rect, asked.end());
    EXPECT_EQ(frame.wrongPixels(picture, {rect->x, rect->y}), 0);
  }
  EXPECT_EQ(frames.back().width, asked.back().width);
  EXPECT_GT(frames.size(), 6u);
}

TEST(CaptureStream, WaitsForFramesInUseToComeBack) {
  Bench bench;
  const xcb_window_t window = bench.other.showColour({100, 100, 300, 300}, 0);
  bench.receiver->hold();
  const auto stream = bench.start({150, 150, 50, 50}, 60);
  repeat(400ms, 10ms, [&](int i) {
    bench.other.fill(window, {50, 50, 50, 50}, static_cast<std::uint32_t>(i + 1));
  });
  EXPECT_EQ(bench.receiver->waitForQuiet(100ms), 3u);
  bench.receiver->release();
  const auto next = bench.receiver->framesFrom(3, 1);
  ASSERT_EQ(next.size(), 1u);
  EXPECT_EQ(next.front().count(40), 50 * 50);  // what is there now, not what was missed
  EXPECT_EQ(bench.receiver->waitForQuiet(100ms), 4u);
  for (int i = 0; i < 3; ++i)
    bench.receiver->release();
  EXPECT_EQ(bench.receiver->waitForQuiet(100ms), 6u);
}

TEST(CaptureStream, StopsForGoodWhenAskedAndWhenDropped) {
  Bench bench;
  const xcb_window_t window = bench.other.showColour({100, 100, 300, 300}, 0);
  auto stream = bench.start({150, 150, 50, 50}, 60);
  bench.receiver->framesFrom(0, 1);
  ASSERT_TRUE(Bench::await(stream->stopCapture()));
  const std::size_t stopped = bench.receiver->complete();
  bench.other.fill(window, {50, 50, 50, 50}, 1);
  EXPECT_EQ(bench.receiver->waitForQuiet(100ms), stopped);
  EXPECT_FALSE(Bench::await(stream->stopCapture()));
  EXPECT_FALSE(Bench::await(stream->startCapture()));

  for (int i = 0; i < 20; ++i) {
    stream = bench.start({150, 150, 50, 50}, 60);
    bench.other.fill(window, {50, 50, 50, 50}, static_cast<std::uint32_t>(i));
    if (i % 2) bench.receiver->framesFrom(bench.receiver->complete(), 1);
    stream.reset();
  }
  const std::size_t dropped = bench.receiver->waitForQuiet(100ms);
  bench.other.fill(window, {50, 50, 50, 50}, 77);
  EXPECT_EQ(bench.receiver->waitForQuiet(100ms), dropped);
}

TEST(CaptureStream, EndsWhenTheServerGoes) {
  Bench bench;
  bench.other.showColour({100, 100, 300, 300}, 5);
  const auto stream = bench.start({150, 150, 50, 50});
  bench.receiver->hold();
  bench.receiver->framesFrom(0, 1);
  const ContentFilter filter = bench.filter(true);
  bench.server.program().kill();
  const auto stop = bench.receiver->waitForStop();
  ASSERT_TRUE(stop);
  EXPECT_EQ(stop->code, connectionLost);
  EXPECT_EQ(stop->domain, errorDomain);
  const auto next = bench.service->makeStream(filter, Bench::configuration({0, 0, 10, 10}), bench.receiver);
  EXPECT_EQ(Bench::await(next->startCapture()).error().code, connectionLost);
  EXPECT_EQ(Bench::await(bench.service->shareableContent({})).error().code, connectionLost);
  // Nobody there, nothing to do: the thread must not spin.
  const clock_t busy = std::clock();
  std::this_thread::sleep_for(300ms);
  EXPECT_LT(static_cast<double>(std::clock() - busy) / CLOCKS_PER_SEC, 0.1);
}

TEST(CaptureService, ListsProcessesWithWindows) {
  Bench bench;
  const velicor::test::Painter painter(bench.server, {10, 10, 50, 50}, 1);
  const xcb_window_t window = bench.ours.makeWindow({100, 100, 50, 50});
  const auto applications = [&](ContentQuery query) {
    const auto content = Bench::await(bench.service->shareableContent(query));
    EXPECT_TRUE(content);
    return content ? content->applications : std::vector<RunningApplication>();
  };
  const RunningApplication painting{painter.processID(), ""};
  const RunningApplication self{getpid(), std::string(product::identifier)};
  EXPECT_EQ(applications({}), std::vector{painting});
  bench.ours.map(window);
  EXPECT_EQ(applications({}), (std::vector{painting, self}));
  bench.ours.unmap(window);
  EXPECT_EQ(applications({}), std::vector{painting});
}

TEST(CaptureService, SaysWhyItCanNotWork) {
  const auto nowhere = makeX11Service(":65000");
  ASSERT_FALSE(nowhere);
  EXPECT_EQ(nowhere.error().code, connectionLost);

  Bench bench("640x480x24", {"-extension", "Composite"});
  EXPECT_TRUE(bench.service->preflightAccess());
  const auto stream = bench.service->makeStream({}, Bench::configuration({0, 0, 10, 10}), bench.receiver);
  EXPECT_EQ(Bench::await(stream->startCapture()).error().code, serverRefused);
}

TEST(CaptureService, RefusesWhatItCanNotMake) {
  Bench bench;
  auto configuration = Bench::configuration({0, 0, 10, 10});
  configuration.showsCursor = true;
  EXPECT_EQ(Bench::await(bench.makeStream(configuration)->startCapture()).error().code, serverRefused);
  configuration = Bench::configuration({0, 0, 0, 10});
  EXPECT_EQ(Bench::await(bench.makeStream(configuration)->startCapture()).error().code, serverRefused);
  const auto elsewhere =
      bench.service->makeStream({{4711}, {}}, Bench::configuration({0, 0, 10, 10}), bench.receiver);
  EXPECT_EQ(Bench::await(elsewhere->startCapture()).error().code, displayUnavailable);
  EXPECT_FALSE(elsewhere->addStreamOutput(bench.receiver, OutputType::audio, bench.queue));
}

}  // namespace
}  // namespace velicor::screencapture::test
