#include <gtest/gtest.h>

#include <array>

#include <unistd.h>

#include "capture_harness.h"

// Several monitors on one screen: an L with a gap in it, a stream on each.
namespace velicor::screencapture::test {
namespace {

struct Watched {
  const char* name;
  DeviceRect place;
  std::shared_ptr<Receiver> receiver = std::make_shared<Receiver>();
  std::shared_ptr<Stream> stream = nullptr;
};

class CapturedMonitors : public testing::Test {
 protected:
  CapturedMonitors() {
    bench_.other.setBackdrop({1});
    for (const Watched& monitor : monitors_)
      bench_.other.defineMonitor(monitor.name, monitor.place, monitor.place.x == 0);
    bench_.other.showPattern({350, 50, 600, 500}, {2});
    coverWithOurs(bench_, {380, 80, 500, 300});
  }

  Status start(Watched& monitor) {
    const Display display{bench_.other.atom(monitor.name)};
    // More than the monitor has: what lies beside it is black.
    const DeviceRect rect{-20, -20, monitor.place.width + 40, monitor.place.height + 40};
    monitor.stream = bench_.service->makeStream({display, {{getpid(), {}}}}, Bench::configuration(rect, 60),
                                                monitor.receiver);
    EXPECT_TRUE(monitor.stream->addStreamOutput(monitor.receiver, OutputType::screen, bench_.queue));
    return Bench::await(monitor.stream->startCapture());
  }

  // To its place, without being away in between.
  void move(const Watched& monitor) {
    xcb_grab_server(bench_.other.raw());
    bench_.other.deleteMonitor(monitor.name);
    bench_.other.defineMonitor(monitor.name, monitor.place, true);
    xcb_ungrab_server(bench_.other.raw());
    bench_.other.sync();
  }

  bool shows(const Watched& monitor, std::size_t from, const DeviceRect& place) {
    const Picture screen = patternAt({350, 50, 600, 500}, {2}, patternAt({0, 0, 1280, 800}, {1}, plain(0)));
    const Picture part = [&](int x, int y) { return place.contains(DevicePoint{x, y}) ? screen(x, y) : 0; };
    return monitor.receiver->waitForFrame(from, [&](const Frame& frame) {
      return frame.wrongPixels(part, {place.x - 20, place.y - 20}) == 0;
    });
  }

  Bench bench_;
  std::array<Watched, 3> monitors_{Watched{"wide", {0, 100, 500, 300}}, Watched{"low", {500, 250, 300, 400}},
                                   Watched{"apart", {900, 0, 300, 200}}};
};

TEST_F(CapturedMonitors, ShowTheirOwnPartOnly) {
  for (Watched& monitor : monitors_)
    ASSERT_TRUE(start(monitor)) << monitor.name;
  for (const Watched& monitor : monitors_) {
    EXPECT_TRUE(shows(monitor, 0, monitor.place)) << monitor.name;
    for (const Frame& frame : monitor.receiver->frames())
      EXPECT_EQ(frame.count(magenta), 0);
  }
}

TEST_F(CapturedMonitors, EndAndComeBackOneByOne) {
  for (Watched& monitor : monitors_)
    ASSERT_TRUE(start(monitor));
  Watched& apart = monitors_[2];
  Watched& low = monitors_[1];
  apart.receiver->framesFrom(0, 1);
  bench_.other.deleteMonitor("apart");
  const auto stop = apart.receiver->waitForStop();
  ASSERT_TRUE(stop);
  EXPECT_EQ(stop->code, displayUnavailable);
  EXPECT_EQ(start(apart).error().code, displayUnavailable);

  // It comes back elsewhere, and a neighbour moves under its stream.
  apart.place = {960, 300, 300, 200};
  low.place = {520, 300, 300, 400};
  const std::size_t before = low.receiver->complete();
  bench_.other.defineMonitor("apart", apart.place, false);
  bench_.other.deleteMonitor("wide");
  move(low);
  EXPECT_TRUE(shows(low, before, low.place));
  apart.receiver = std::make_shared<Receiver>();
  ASSERT_TRUE(start(apart));
  EXPECT_TRUE(shows(apart, 0, apart.place));
  EXPECT_EQ(monitors_[0].receiver->waitForStop()->code, displayUnavailable);
}

}  // namespace
}  // namespace velicor::screencapture::test
