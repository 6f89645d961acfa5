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
  pacer_.setInterval(durationOf(configuration.minimumFrameInterval));
  pool_.setDepth(configuration.queueDepth);
  pacer_.demandFrame();
}

void StreamWorker::setFilter(const ContentFilter& filter, const DeviceRect& monitor) {
  filter_ = filter;
  monitor_ = monitor;
  refreshFilter();
  pacer_.demandFrame();
}

void StreamWorker::setMonitor(const DeviceRect& monitor) {
  monitor_ = monitor;
  pacer_.stir();
}

void StreamWorker::refreshFilter() {
  x11::ClientSet leftOut = context_.processes.clientsOf(filter_.excludedApplications);
  if (leftOut == leftOut_) return;
  leftOut_ = std::move(leftOut);
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
  const ScenePlan scene = plan();
  const bool rearranged = !shown_ || !(scene == *shown_);
  renderer_.follow(scene);
  if (rearranged || pacer_.owesFrame()) return makeFrame(now, scene, rearranged, false);
  if (renderer_.drawnInside(scene)) return makeFrame(now, scene, false, true);
  sendIdle(now);
  return {};
}

ScenePlan StreamWorker::plan() const {
  return planScene(context_.watcher.stack(),
                   {frameRect(configuration_, monitor_), monitor_, leftOut_, context_.watcher.isComposited(),
                    context_.watcher.background()});
}

Status StreamWorker::makeFrame(Instant now, const ScenePlan& scene, bool rearranged, bool drawn) {
  const std::shared_ptr<Segment> segment = pool_.acquire(frameSize(configuration_));
  if (!segment) {
    pacer_.skipped(now);
    return {};
  }
  const SceneRenderer::Drawing drawing = renderer_.draw(scene, *segment);
  if (!drawing.done) {
    pool_.giveBack(segment);
    return skip(now);
  }
  failures_ = 0;
  // What was drawn may lie under an opaque neighbour.
  if (!rearranged && !pacer_.owesFrame() && looksLikeLast(*segment)) {
    pool_.giveBack(segment);
    sendIdle(now);
    return {};
  }
  shown_ = scene;
  const bool changed = rearranged || drawn || drawing.drawnInside || pacer_.isDemanded();
  changed ? pacer_.changed(now) : pacer_.settled(now);
  SampleBuffer sample{true, {{FrameStatus::complete}}, nullptr};
  sample.imageBuffer = pool_.publish(segment, configuration_.width, configuration_.height);
  delivery_->send(std::move(sample));
  return {};
}

Status StreamWorker::skip(Instant now) {
  pacer_.skipped(now);
  if (++failures_ < mostFailures) return {};
  return failure(errorDomain, serverRefused, "The X server does not hand out the screen's contents");
}

void StreamWorker::sendIdle(Instant now) {
  pacer_.idle(now);
  delivery_->send({true, {{FrameStatus::idle}}, nullptr});
}

bool StreamWorker::looksLikeLast(const Segment& segment) const {
  const Segment* last = pool_.last();
  return last && std::memcmp(last->bytes(), segment.bytes(), frameSize(configuration_)) == 0;
}

}  // namespace velicor::screencapture
