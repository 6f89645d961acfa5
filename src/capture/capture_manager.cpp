#include "capture/capture_manager.h"

#include <utility>

#include "capture/capture_texts.h"
#include "capture/stream_configuration.h"
#include "platform/dispatch/main_queue.h"

namespace velicor {

namespace {

constexpr std::chrono::milliseconds flushDelay{50};

}  // namespace

// Takes a stream's last word to the main thread.
class CaptureManager::StopRelay : public screencapture::StreamDelegate {
 public:
  StopRelay(Life life, CaptureManager& session) : life_(std::move(life)), session_(session) {}

  void didStopWithError(screencapture::Stream& /*stream*/, const Error& error) override {
    dispatch::MainQueue::shared().async([life = life_, &session = session_, error] {
      if (!life.expired()) session.streamStopped(error);
    });
  }

 private:
  const Life life_;
  CaptureManager& session_;  // touched on the main thread only, while life_ lasts
};

CaptureManager::CaptureManager(std::shared_ptr<screencapture::Service> service, dispatch::Clock& clock)
    : service_(std::move(service)),
      clock_(clock),
      outputQueue_(
          std::make_shared<dispatch::SerialQueue>("velicor.capture", dispatch::Priority::userInteractive)) {
  stopRelay_ = std::make_shared<StopRelay>(life_, *this);
}

CaptureManager::~CaptureManager() { output_->setHandler({}); }

dispatch::Job CaptureManager::whileAlive(dispatch::Job job) const {
  return [life = Life(life_), job = std::move(job)] {
    if (!life.expired()) job();
  };
}

void CaptureManager::setOnFrame(FrameOutput::Handler onFrame) { output_->setHandler(std::move(onFrame)); }

void CaptureManager::setFps(int fps) {
  fps_ = fps;
  flushRegion();
}

void CaptureManager::start(const desktop::Screen& screen) {
  if (suspended_ || !screen.displayID) return;
  enqueueStart(*screen.displayID, screen);
}

void CaptureManager::updateRegion(const DesktopRect& rect, const desktop::Screen& screen) {
  pendingRegion_ = Region{rect, screen};
  if (!screen.displayID) return;
  if (currentDisplayID_ != screen.displayID) {
    if (!suspended_) enqueueStart(*screen.displayID, screen);
    return;
  }
  // A start that is still under way will use the pending region.
  if (!stream_ || flushScheduled_) return;
  flushScheduled_ = true;
  clock_.callAfter(flushDelay, whileAlive([this] { flushRegion(); }));
}

void CaptureManager::flushRegion() {
  flushScheduled_ = false;
  if (!stream_ || !pendingRegion_) return;
  dispatch::MainQueue::shared().async(
      whileAlive([this, stream = stream_, region = *pendingRegion_] { applyPendingRegion(stream, region); }));
}

QCoro::Task<> CaptureManager::applyPendingRegion(StreamRef stream, Region region) {
  // A stream that can't be moved now will be by the loupe's next move.
  co_await stream->updateConfiguration(configurationFor(region));
}

screencapture::StreamConfiguration CaptureManager::configurationFor(const Region& region) const {
  return streamConfiguration(region.rect, region.screen, fps_);
}

void CaptureManager::stop() {
  suspended_ = true;
  output_->setPassing(false);
  chain_.enqueue([this] { return runStop(life_); });
}

QCoro::Task<> CaptureManager::runStop(Life life) {
  if (!stream_) co_return;
  const StreamRef ending = std::exchange(stream_, nullptr);
  currentDisplayID_.reset();
  excludesSelf_ = false;
  co_await ending->stopCapture();
  if (life.expired()) co_return;
  isRunning_ = false;
}

void CaptureManager::resume() {
  if (!suspended_) return;
  suspended_ = false;
  output_->setPassing(true);
  if (!pendingRegion_) return;
  retriesLeft_ = allowedRestarts;
  start(pendingRegion_->screen);
}

void CaptureManager::streamStopped(const Error& error) {
  isRunning_ = false;
  currentDisplayID_.reset();
  stream_.reset();
  excludesSelf_ = false;
  log_.error("stream stopped: " + error.description);
  if (suspended_) return;
  if (pendingRegion_ && retriesLeft_ > 0) {
    --retriesLeft_;
    start(pendingRegion_->screen);
    return;
  }
  lastError_ = capturetexts::streamStopped(error);
}

}  // namespace velicor
