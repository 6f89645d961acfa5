#pragma once

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "platform/base/geometry.h"
#include "program/running_velicor.h"
#include "support/robot.h"
#include "support/x_client.h"
#include "support/x_server.h"

namespace velicor::benchmarks {

// A display of its own with a window manager and nothing else, big enough for everybody's windows side by
// side.
class LoupeStage {
 public:
  LoupeStage();

  const std::string& display() const { return server_.name(); }
  pid_t serverProcess() { return server_.program().processID(); }
  test::XClient& client() { return client_; }
  test::Robot& mouse() { return mouse_; }

  // 0xRRGGBB, of one pixel of the screen.
  std::uint32_t pixelAt(DevicePoint place) const {
    return client_.screenImage({place.x, place.y, 1, 1}).at(0);
  }

  // Under all other windows, one of another program that is larger than the region and never changes.
  void showStillGround();

  // The top-level window with exactly this frame, none while there is none.
  xcb_window_t windowWithFrame(const DeviceRect& frame) const;

  // The windows of the client that made this one, at any depth.
  std::vector<xcb_window_t> windowsOfSameClient(xcb_window_t window) const;

 private:
  test::XServer server_;
  test::WindowManager manager_;
  test::XClient client_;
  test::Robot mouse_;
};

inline constexpr int stageWidth = 2800;
inline constexpr int stageHeight = 1200;

// Where the loupe is when the program starts: in the middle, the half pixels rounded up.
inline constexpr int firstSide = 175;
inline constexpr DeviceRect loupeAtStart{(stageWidth - firstSide + 1) / 2, (stageHeight - firstSide + 1) / 2,
                                         firstSide, firstSide};

// What the loupe lies over when it is measured.
inline constexpr DeviceRect region{60, 60, 640, 400};
inline constexpr DevicePoint regionCentre{region.x + region.width / 2, region.y + region.height / 2};

// Far from everything that takes the mouse.
inline constexpr DevicePoint pointerRest{5, stageHeight - 5};

// The running program with both panels shown and its loupe over the region; the pointer is elsewhere and
// still.
class LoupeOnStage {
 public:
  explicit LoupeOnStage(LoupeStage& stage);

  pid_t processID() const { return static_cast<pid_t>(velicor_.processID()); }
  xcb_window_t loupe() const { return loupe_; }

 private:
  DeviceRect drag(DeviceRect loupe, DevicePoint handle, DevicePoint distance, bool corner);

  LoupeStage& stage_;
  test::RunningVelicor velicor_;
  xcb_window_t loupe_ = 0;
};

// Another program's window that is larger than the region and shows another picture 30 times a second, for as
// long as this lives.
class MovingPicture {
 public:
  explicit MovingPicture(const std::string& display);

 private:
  void run(const std::stop_token& stop);

  test::XClient client_;
  std::vector<xcb_pixmap_t> pictures_;
  xcb_window_t window_ = 0;
  std::jthread thread_;
};

}  // namespace velicor::benchmarks
