#include "platform/screencapture/x11/stream_worker.h"

#include <chrono>
#include <cstring>
#include <utility>

#include "platform/screencapture/frame_geometry.h"

namespace velicor::screencapture {

namespace {

// Frames that may fail one after the other before the stream gives up: enough for a storm of vanishing
// windows, little enough that a picture that has stopped for good is reported within seconds.
constexpr int mostFailures = 10;

// Looks of one tick that may miss one after the other: windows hardly ever vanish so fast.
constexpr int mostMisses = 5;

dispatch::Duration durationOf(const FrameInterval& interval) {
  const double seconds = static_cast<double>(interval.value) / std::max(1, interval.timescale);
  return std::chrono::duration_cast<dispatch::Duration>(std::chrono::duration<double>(seconds));
}

std::size_t frameSize(const StreamConfiguration& configuration) {
  return static_cast<std::size_t>(configuration.width) * static_cast<std::size_t>(configuration.height) * 4;
}

}  // namespace

StreamWorker::StreamWorker(const CaptureContext& context, std::shared_ptr<Delivery> delivery,
                           const ContentFilter& filter, const StreamConfiguration& configuration,
                           const DeviceRect& monitor, std::function<void()> onFree)
    : context_(context),
      delivery_(std::move(delivery)),
      filter_(filter),
      configuration_(configuration),
      monitor_(monitor),
      pacer_(durationOf(configuration.minimumFrameInterval)),
      renderer_(context.connection, context.formats),
      memory_(context.connection),
      pool_(memory_, configuration.queueDepth, std::move(onFree)) {
  refreshFilter();
  pacer_.demandFrame();
}

void StreamWorker::setConfiguration(const StreamConfiguration& configuration) {
  configuration_ = configuration;
  planned_.reset();
  pacer_.setInterval(durationOf(configuration.minimumFrameInterval));
  pool_.setDepth(configuration.queueDepth);
  pacer_.demandFrame();
}

void StreamWorker::setFilter(const ContentFilter& filter, const DeviceRect& monitor) {
  filter_ = filter;
  monitor_ = monitor;
  planned_.reset();
  refreshFilter();
  pacer_.demandFrame();
}

void StreamWorker::setMonitor(const DeviceRect& monitor) {
  monitor_ = monitor;
  planned_.reset();
  pacer_.stir();
}

void StreamWorker::refreshFilter() {
  x11::ClientSet leftOut = context_.processes.clientsOf(filter_.excludedApplications);
  if (leftOut == leftOut_) return;
  leftOut_ = std::move(leftOut);
  planned_.reset();
  pacer_.stir();
}

void StreamWorker::take(const xcb_generic_event_t& event) {
  if (renderer_.take(event)) pacer_.stir();
}

std::optional<StreamWorker::Instant> StreamWorker::due() {
  // A frame that can't be made anyway is not worth waking up for; a segment that comes back will tell.
  if (pacer_.owesFrame() && !pool_.hasFree()) return std::nullopt;
  return pacer_.due();
}

Status StreamWorker::look(Instant now) {
  hasMissed_ = false;
  followScene();
  if (!isShown_) return makeFrame(now);
  if (pacer_.owesFrame()) return repeatFrame(now) ? Status() : makeFrame(now);
  if (renderer_.drawnInside()) return makeFrame(now);
  pacer_.idle(now);
  return {};
}

void StreamWorker::followScene() {
  const Surroundings surroundings{context_.watcher.stack().revision(),
                                  context_.watcher.background().generation};
  if (planned_ == surroundings) return;
  planned_ = surroundings;
  ScenePlan plan =
      planScene(context_.watcher.stack(), {frameRect(configuration_, monitor_), monitor_, leftOut_,
                                           context_.watcher.isComposited(), context_.watcher.background()});
  if (plan == renderer_.plan()) return;
  isShown_ = false;
  renderer_.follow(std::move(plan));
}

Status StreamWorker::makeFrame(Instant now) {
  const std::shared_ptr<Segment> segment = pool_.acquire(frameSize(configuration_));
  if (!segment) {
    pacer_.skipped(now);
    return {};
  }
  const SceneRenderer::Drawing drawing = renderer_.draw(*segment);
  if (!drawing.done) {
    pool_.giveBack(segment);
    return skip(now);
  }
  failures_ = 0;
  pool_.written(segment, drawing.changed);
  if (drawing.isLacking) {
    pool_.giveBack(segment);
    hasMissed_ = ++misses_ % mostMisses != 0;
    if (!hasMissed_) pacer_.skipped(now);
    return {};
  }
  misses_ = 0;
  isThorough_ = drawing.isWhole;
  // What was drawn may lie under an opaque neighbour.
  if (isShown_ && !pacer_.owesFrame() && looksLikeLast(*segment, drawing.changed)) {
    pool_.giveBack(segment);
    pacer_.idle(now);
    return {};
  }
  const bool changed = !std::exchange(isShown_, true) || drawing.drawnInside || pacer_.isDemanded();
  changed ? pacer_.changed(now) : pacer_.settled(now);
  send(pool_.publish(segment, configuration_.width, configuration_.height));
  return {};
}

// Where nothing was drawn since the last frame, the same memory makes the next one. What was put together of
// parts is taken anew once: it then shows everything, also what no damage was reported for.
bool StreamWorker::repeatFrame(Instant now) {
  if (!renderer_.isCurrent()) return false;
  if (!isThorough_) {
    renderer_.drawAnew();
    return false;
  }
  PixelBufferRef frame = pool_.publishLast(configuration_.width, configuration_.height);
  if (!frame) return false;
  pacer_.isDemanded() ? pacer_.changed(now) : pacer_.settled(now);
  send(std::move(frame));
  return true;
}

void StreamWorker::send(PixelBufferRef frame) {
  delivery_->send({true, {{FrameStatus::complete}}, std::move(frame)});
}

Status StreamWorker::skip(Instant now) {
  pacer_.skipped(now);
  if (++failures_ < mostFailures) return {};
  return failure(errorDomain, serverRefused, "The X server does not hand out the screen's contents");
}

// Rows outside the changed ones are the same in both.
bool StreamWorker::looksLikeLast(const Segment& segment, const Rows& changed) const {
  const Segment* last = pool_.last();
  const std::size_t row = static_cast<std::size_t>(configuration_.width) * 4;
  const std::size_t begin = row * static_cast<std::size_t>(changed.top);
  const std::size_t length = row * static_cast<std::size_t>(changed.bottom - changed.top);
  return last && std::memcmp(last->bytes() + begin, segment.bytes() + begin, length) == 0;
}

}  // namespace velicor::screencapture
