// A stream that had to start before the program's own windows were listed sees them; this leaves them out as
// soon as they are.
#include <utility>

#include "capture/capture_manager.h"
#include "capture/stream_configuration.h"
#include "platform/base/product.h"
#include "platform/dispatch/main_queue.h"

namespace velicor {

namespace {

constexpr int repairAttempts = 30;
constexpr std::chrono::seconds repairInterval{1};

}  // namespace

void CaptureManager::scheduleFilterRepair(int attempt) {
  if (attempt == 0) {
    if (repairing_) return;
    repairing_ = true;
  }
  if (excludesSelf_ || attempt >= repairAttempts || suspended_ || !stream_ || !currentDisplayID_) {
    repairing_ = false;
    return;
  }
  dispatch::MainQueue::shared().async(
      whileAlive([this, attempt, displayID = *currentDisplayID_, stream = stream_] {
        runFilterRepair(life_, attempt, displayID, stream);
      }));
}

void CaptureManager::repeatFilterRepair(int attempt) {
  clock_.callAfter(repairInterval, whileAlive([this, attempt] { scheduleFilterRepair(attempt + 1); }));
}

QCoro::Task<> CaptureManager::runFilterRepair(Life life, int attempt, std::uint32_t displayID,
                                              StreamRef stream) {
  const auto content = co_await service_->shareableContent({});
  if (life.expired()) co_return;
  const auto display = content ? findDisplay(*content, displayID) : std::nullopt;
  const auto own = content ? ownApplications(*content) : std::vector<screencapture::RunningApplication>();
  if (!display || own.empty() || stream_ != stream) co_return repeatFilterRepair(attempt);

  // Whether the two updates succeed is not asked: the stream that refuses them is about to stop by itself.
  screencapture::ContentFilter filter{*display, own};
  co_await stream->updateContentFilter(std::move(filter));
  if (life.expired()) co_return;
  if (pendingRegion_) {
    co_await stream->updateConfiguration(configurationFor(*pendingRegion_));
    if (life.expired()) co_return;
  }
  // Another stream may have come meanwhile, which sees our windows or not.
  if (stream_ != stream) co_return repeatFilterRepair(attempt);
  excludesSelf_ = true;
  repairing_ = false;
  log_.info("content filter repaired: " + std::string(product::name) + " now excluded");
}

}  // namespace velicor
