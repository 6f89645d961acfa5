// How a stream comes to run: the start operation of the capture session.
#include <utility>

#include "capture/capture_manager.h"
#include "capture/capture_texts.h"
#include "capture/stream_configuration.h"
#include "platform/base/product.h"

namespace velicor {

namespace {

constexpr std::chrono::milliseconds retryDelay{400};
constexpr std::chrono::milliseconds listingDelay{150};
constexpr int furtherQueries = 6;
constexpr int displayNotFound = 1;

// What a listing showed, and how often it had to be asked for again until this program was in it.
struct Listing {
  screencapture::ShareableContent content;
  std::vector<screencapture::RunningApplication> own;
  int extraQueries = 0;
};

// Windows that were mapped a moment ago may not be listed yet, so an absent program is looked for again.
QCoro::Task<Result<Listing>> listContent(std::shared_ptr<screencapture::Service> service,
                                         dispatch::Clock& clock, std::weak_ptr<const void> wanted) {
  Listing listing;
  while (true) {
    auto content = co_await service->shareableContent({});
    if (!content) co_return Result<Listing>(tl::unexpected(content.error()));
    listing.content = std::move(*content);
    listing.own = ownApplications(listing.content);
    if (!listing.own.empty() || listing.extraQueries == furtherQueries) break;
    co_await dispatch::sleep(clock, listingDelay);
    if (wanted.expired()) break;
    ++listing.extraQueries;
  }
  co_return Result<Listing>(std::move(listing));
}

// The stream keeps its output queue: whoever holds the stream holds both, and the queue goes last.
struct StreamWithQueue {
  std::shared_ptr<dispatch::SerialQueue> queue;
  std::shared_ptr<screencapture::Stream> stream;
};

}  // namespace

void CaptureManager::enqueueStart(std::uint32_t displayID, const desktop::Screen& screen) {
  currentDisplayID_ = displayID;
  const int number = ++lastStart_;
  chain_.enqueue([this, number, displayID, screen] { return runStart(life_, number, displayID, screen); });
}

QCoro::Task<> CaptureManager::runStart(Life life, int number, std::uint32_t displayID,
                                       desktop::Screen screen) {
  const Status started = co_await startAsync(life, displayID, screen);
  if (life.expired()) co_return;
  if (started) {
    startSucceeded(displayID);
  } else {
    startFailed(started.error(), number, screen);
  }
}

QCoro::Task<Status> CaptureManager::startAsync(Life life, std::uint32_t displayID, desktop::Screen screen) {
  if (const StreamRef old = stream_) {
    co_await old->stopCapture();
    if (life.expired()) co_return Status();
    stream_.reset();
  }
  excludesSelf_ = false;

  const Result<Listing> listing = co_await listContent(service_, clock_, life);
  if (life.expired()) co_return Status();
  if (!listing) co_return Status(tl::unexpected(listing.error()));
  const auto display = findDisplay(listing->content, displayID);
  if (!display) co_return Status(failure(product::name, displayNotFound, "Display not found"));

  excludesSelf_ = !listing->own.empty();
  log_.info("filter excludes " + std::to_string(listing->own.size()) + " own app(s), " +
            std::to_string(listing->extraQueries) + " extra queries");
  if (!excludesSelf_) {
    log_.error(std::string(product::name) + " not listed as shareable — starting unexcluded, will repair");
  }

  const std::optional<Region> opened = pendingRegion_;
  const int openedFps = fps_;
  const Result<StreamRef> stream = openStream({*display, listing->own}, screen);
  if (!stream) co_return Status(tl::unexpected(stream.error()));
  const Status started = co_await (*stream)->startCapture();
  if (life.expired() || !started) co_return started;
  stream_ = *stream;
  // An older start that failed, or a stop that was still waiting, has taken it back meanwhile.
  if (!currentDisplayID_) currentDisplayID_ = displayID;
  // What came while it was starting found no stream yet.
  if (pendingRegion_ != opened || fps_ != openedFps) flushRegion();
  if (!excludesSelf_) scheduleFilterRepair(0);
  co_return Status();
}

Result<CaptureManager::StreamRef> CaptureManager::openStream(const screencapture::ContentFilter& filter,
                                                             const desktop::Screen& screen) {
  const DesktopRect rect = pendingRegion_ ? pendingRegion_->rect : screen.frame;
  const auto bundle = std::make_shared<StreamWithQueue>();
  bundle->queue = outputQueue_;
  bundle->stream = service_->makeStream(filter, configurationFor({rect, screen}), stopRelay_);
  const Status added =
      bundle->stream->addStreamOutput(output_, screencapture::OutputType::screen, *outputQueue_);
  if (!added) return tl::unexpected(added.error());
  return StreamRef(bundle, bundle->stream.get());
}

void CaptureManager::startSucceeded(std::uint32_t displayID) {
  isRunning_ = true;
  lastError_ = std::nullopt;
  retriesLeft_ = allowedRestarts;
  log_.info("capture running on display " + std::to_string(displayID));
}

void CaptureManager::startFailed(const Error& error, int number, const desktop::Screen& screen) {
  currentDisplayID_.reset();
  isRunning_ = false;
  log_.error("capture failed: " + error.description);
  if (!service_->preflightAccess()) {
    service_->requestAccess();
    lastError_ = capturetexts::permissionRequired();
  } else if (retriesLeft_ > 0) {
    --retriesLeft_;
    log_.info("retrying capture");
    // A start asked for meanwhile, on the display that the loupe is on now, is not undone by an old one.
    clock_.callAfter(retryDelay, whileAlive([this, number, screen] {
                       if (number == lastStart_) start(screen);
                     }));
  } else {
    lastError_ = capturetexts::messageFor(error);
  }
}

}  // namespace velicor
