// The session on the real capture service: a display that goes, stays away and comes back.
#include <gtest/gtest.h>

#include <cstring>
#include <mutex>

#include "capture/capture_manager.h"
#include "platform/screencapture/x11/service.h"
#include "support/log_recorder.h"
#include "support/main_loop.h"
#include "support/x_client.h"
#include "support/x_server.h"

namespace velicor::test {
namespace {

constexpr int rootHeight = 800;

class CaptureOnX11Test : public testing::Test {
 protected:
  CaptureOnX11Test() {
    ours_.joinOwn(own_);
    other_.defineMonitor("left", {0, 0, 640, rootHeight}, true);
    defineRight();
    right_.displayID = other_.atom("right");
    right_.frame = {640, 0, 640, rootHeight};
    ground_ = other_.showPattern({0, 0, 1280, rootHeight}, {1});
    ours_.showColour({690, 90, 400, 300}, magenta);
    session_.setOnFrame([this](const PixelBufferRef& frame) {
      const std::scoped_lock guard(mutex_);
      last_ = frame;
    });
  }
  ~CaptureOnX11Test() override { session_.setOnFrame({}); }

  void defineRight() { other_.defineMonitor("right", {640, 0, 640, rootHeight}, false); }

  void report(const DeviceRect& place) {
    const auto y = static_cast<double>(rootHeight - place.bottom());
    session_.updateRegion({static_cast<double>(place.x), y, static_cast<double>(place.width),
                           static_cast<double>(place.height)},
                          right_);
  }

  // The newest frame comes to show the ground at this place, and nothing of ours.
  bool receives(const DeviceRect& place, Pattern ground) {
    return waitUntil([&] {
      const std::scoped_lock guard(mutex_);
      if (!last_ || last_->width() != place.width || last_->height() != place.height) return false;
      for (int y = 0; y < place.height; ++y) {
        for (int x = 0; x < place.width; ++x) {
          std::uint32_t pixel = 0;
          std::memcpy(&pixel, &last_->row(y)[static_cast<std::size_t>(x) * 4], 3);
          if (pixel != ground.at(place.x + x, place.y + y)) return false;
        }
      }
      return true;
    });
  }

  XServer server_;
  x11::OwnClients own_;
  std::shared_ptr<screencapture::Service> service_ =
      std::move(*screencapture::makeX11Service(server_.name(), own_));
  XClient other_{server_.name()};
  XClient ours_{server_.name()};
  xcb_window_t ground_ = 0;
  desktop::Screen right_;
  LogRecorder log_;
  std::mutex mutex_;
  PixelBufferRef last_;
  CaptureManager session_{service_, dispatch::systemClock()};
};

TEST_F(CaptureOnX11Test, EndsWithTheDisplayAndRecoversOnceItIsBack) {
  const DeviceRect first{700, 100, 80, 60};
  report(first);
  ASSERT_TRUE(receives(first, {1}));
  const DeviceRect moved{760, 180, 90, 50};
  for (int step = 1; step <= 10; ++step)
    report(first.translatedBy(6 * step, 8 * step));
  report(moved);
  EXPECT_TRUE(receives(moved, {1}));
  const std::size_t before = log_.lines().size();

  other_.deleteMonitor("right");
  ASSERT_TRUE(waitUntil([&] { return session_.lastError().has_value(); }));
  EXPECT_EQ(session_.lastError(), "Capture failed: Display not found");
  EXPECT_FALSE(session_.isRunning());
  const auto lines = log_.lines();
  EXPECT_EQ(std::vector(lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end()),
            (std::vector<std::string>{
                "capture error: stream stopped: The display is not connected",
                "capture error: capture failed: Display not found", "capture info: retrying capture",
                "capture error: capture failed: Display not found", "capture info: retrying capture",
                "capture error: capture failed: Display not found"}));

  defineRight();
  other_.setPattern(ground_, {2});
  report(moved);
  EXPECT_TRUE(receives(moved, {2}));
  EXPECT_TRUE(waitUntil([&] { return session_.isRunning(); }));
  EXPECT_EQ(session_.lastError(), std::nullopt);

  // Away for a moment only: the first automatic restart finds it again, without being told.
  other_.deleteMonitor("right");
  defineRight();
  other_.setPattern(ground_, {3});
  EXPECT_TRUE(receives(moved, {3}));
}

}  // namespace
}  // namespace velicor::test
