#pragma once

#include <memory>
#include <optional>

#include "platform/screencapture/frame_pacer.h"
#include "platform/screencapture/screen_capture.h"
#include "platform/screencapture/x11/capture_memory.h"
#include "platform/screencapture/x11/delivery.h"
#include "platform/screencapture/x11/process_directory.h"
#include "platform/screencapture/x11/scene_renderer.h"
#include "platform/screencapture/x11/server_memory.h"
#include "platform/screencapture/x11/stack_watcher.h"

namespace velicor::screencapture {

// What the workers of all streams share on the capture thread.
struct CaptureContext {
  x11::Connection& connection;
  const VisualFormats& formats;
  const StackWatcher& watcher;
  const ProcessDirectory& processes;
};

// One running stream on the capture thread: looks when it is time, composes, and sends samples off.
class StreamWorker {
 public:
  using Instant = FramePacer::Instant;

  // `onFree` is called on any thread when the stream waited for a segment and got one back.
  StreamWorker(const CaptureContext& context, std::shared_ptr<Delivery> delivery, const ContentFilter& filter,
               const StreamConfiguration& configuration, const DeviceRect& monitor,
               std::function<void()> onFree);

  // Take effect with the next frame.
  void setConfiguration(const StreamConfiguration& configuration);
  void setFilter(const ContentFilter& filter, const DeviceRect& monitor);
  void setMonitor(const DeviceRect& monitor);

  // The clients of the processes to leave out may have changed.
  void refreshFilter();

  // The windows may have changed.
  void stir() { pacer_.stir(); }
  void take(const xcb_generic_event_t& event);
  bool take(const xcb_generic_error_t& error) { return renderer_.take(error); }

  // When look() has something to do; none: nothing before the next event.
  std::optional<Instant> due();

  // Looks at the screen, and sends a frame where there is something new. The watcher must be up to date. The
  // error ends the stream.
  Status look(Instant now);

  // The last look has sent nothing, because a window was gone before its contents could be had. The events
  // that tell of it have been read: look again with a watcher that knows. After a few such looks it says no,
  // and waits for the next tick.
  bool hasMissed() const { return hasMissed_; }

  const std::shared_ptr<Delivery>& delivery() const { return delivery_; }
  const ContentFilter& filter() const { return filter_; }
  std::vector<WindowId> takeRefused() { return renderer_.takeRefused(); }

 private:
  // What decides a plan besides the stream's own settings.
  struct Surroundings {
    unsigned stack = 0;
    unsigned background = 0;
    friend bool operator==(const Surroundings&, const Surroundings&) = default;
  };

  void followScene();
  Status makeFrame(Instant now);
  bool repeatFrame(Instant now);
  void send(PixelBufferRef frame);
  Status skip(Instant now);
  bool looksLikeLast(const Segment& segment, const Rows& changed) const;

  CaptureContext context_;
  std::shared_ptr<Delivery> delivery_;
  ContentFilter filter_;
  StreamConfiguration configuration_;
  DeviceRect monitor_;
  x11::ClientSet leftOut_;
  FramePacer pacer_;
  SceneRenderer renderer_;
  ServerMemory memory_;
  SegmentPool pool_;
  std::optional<Surroundings> planned_;  // those of the renderer's plan; none: plan anew
  bool isShown_ = false;                 // the last frame was made of that plan
  bool isThorough_ = false;              // the last frame was not put together of parts
  bool hasMissed_ = false;
  int misses_ = 0;    // in a row
  int failures_ = 0;  // in a row
};

}  // namespace velicor::screencapture
