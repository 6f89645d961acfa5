#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <QCoroTask>

#include "capture/frame_output.h"
#include "platform/base/geometry.h"
#include "platform/desktop/screen.h"
#include "platform/dispatch/clock.h"
#include "platform/dispatch/serial_queue.h"
#include "platform/dispatch/task_chain.h"
#include "platform/log/log.h"
#include "platform/notifications/published.h"
#include "platform/notifications/signal.h"
#include "platform/screencapture/screen_capture.h"

namespace velicor {

// The capture session: streams the screen region under the loupe, without the program's own windows, and
// hands every complete frame to `onFrame`. It runs one stream, on the display under the loupe; keeps the
// stream's rectangle in step with the loupe; starts anew when the loupe moves to another display, when a
// start fails and when the stream ends by itself (three times, then it says so in lastError).
//
// Everything is called and answered on the main thread, except that onFrame runs on the session's output
// queue. Starting and stopping take time: they run one after the other, in the order they were asked for. The
// session may be destroyed at any moment; what is under way then ends by itself and without effect.
class CaptureManager {
 public:
  // The clock must outlive the session and what it has under way.
  CaptureManager(std::shared_ptr<screencapture::Service> service, dispatch::Clock& clock);
  ~CaptureManager();
  CaptureManager(const CaptureManager&) = delete;
  CaptureManager& operator=(const CaptureManager&) = delete;

  // Called before isRunning or lastError changes.
  Signal<> willChange;

  // A stream has started and not stopped.
  bool isRunning() const { return *isRunning_; }

  // Text for the user after a failure; none once a start has succeeded.
  const std::optional<std::string>& lastError() const { return *lastError_; }

  // Receives the pixel buffer of every complete frame, one at a time, on the serial output queue. When this
  // returns, or the session is gone, the previous closure is not called any more.
  void setOnFrame(FrameOutput::Handler onFrame);

  // Frames a second at most. Setting it re-applies the configuration to a running stream.
  int fps() const { return fps_; }
  void setFps(int fps);

  // Starts capture on the screen's display. Does nothing while suspended, or for a screen without identifier.
  void start(const desktop::Screen& screen);

  // The loupe's rectangle in desktop points and the screen it is on. Starts capture if none runs for that
  // display (and the session is not suspended), else moves the running stream's rectangle, at most once in
  // 50 ms.
  void updateRegion(const DesktopRect& rect, const desktop::Screen& screen);

  // Suspends: ends the capture and starts none until resume(), which restarts it for the last known region. When it
  // returns, no frame reaches onFrame any more.
  void stop();
  void resume();

 private:
  using Life = std::weak_ptr<const void>;
  using StreamRef = std::shared_ptr<screencapture::Stream>;
  class StopRelay;

  // Automatic restarts after failures, until a start succeeds or the user resumes the capture.
  static constexpr int allowedRestarts = 3;

  struct Region {
    DesktopRect rect;
    desktop::Screen screen;
    friend bool operator==(const Region&, const Region&) = default;
  };

  // Parameters of coroutines are values: the caller's variables are gone when they continue. After every
  // await they look at `life` before they touch the session.
  void enqueueStart(std::uint32_t displayID, const desktop::Screen& screen);
  QCoro::Task<> runStart(Life life, int number, std::uint32_t displayID, desktop::Screen screen);
  QCoro::Task<Status> startAsync(Life life, std::uint32_t displayID, desktop::Screen screen);
  Result<StreamRef> openStream(const screencapture::ContentFilter& filter, const desktop::Screen& screen);
  void startSucceeded(std::uint32_t displayID);
  void startFailed(const Error& error, int number, const desktop::Screen& screen);
  QCoro::Task<> runStop(Life life);
  void streamStopped(const Error& error);

  void flushRegion();
  QCoro::Task<> applyPendingRegion(StreamRef stream, Region region);
  screencapture::StreamConfiguration configurationFor(const Region& region) const;

  void repeatFilterRepair(int attempt);
  void scheduleFilterRepair(int attempt);
  QCoro::Task<> runFilterRepair(Life life, int attempt, std::uint32_t displayID, StreamRef stream);

  // A job that does nothing once the session is gone.
  dispatch::Job whileAlive(dispatch::Job job) const;

  const std::shared_ptr<screencapture::Service> service_;
  dispatch::Clock& clock_;
  const log::Logger log_{"capture"};
  const std::shared_ptr<dispatch::SerialQueue> outputQueue_;
  const std::shared_ptr<FrameOutput> output_ = std::make_shared<FrameOutput>();
  std::shared_ptr<screencapture::StreamDelegate> stopRelay_;

  Published<bool> isRunning_{willChange, false};
  Published<std::optional<std::string>> lastError_{willChange, std::nullopt};
  StreamRef stream_;  // set only after a successful start
  int retriesLeft_ = allowedRestarts;
  int lastStart_ = 0;  // starts asked for so far
  std::optional<std::uint32_t> currentDisplayID_;  // where the stream runs or is being started
  bool suspended_ = false;
  bool excludesSelf_ = false;  // the current stream leaves out this program's windows
  bool repairing_ = false;
  int fps_ = 15;
  std::optional<Region> pendingRegion_;  // the latest one that was reported
  bool flushScheduled_ = false;

  std::shared_ptr<const int> life_ = std::make_shared<int>(0);
  dispatch::TaskChain chain_;  // last: goes first, so that nothing begins while the rest goes
};

}  // namespace velicor
