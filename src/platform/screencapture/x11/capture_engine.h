#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/screencapture/x11/error_journal.h"
#include "platform/screencapture/x11/mailbox.h"
#include "platform/screencapture/x11/stream_worker.h"
#include "platform/x11/monitors.h"

namespace velicor::screencapture {

// The capture thread: one connection of its own, the model of the screen's windows, and the streams that run.
// Sleeps until an event, a job or a stream's due time; a still screen wakes it up for nothing.
class CaptureEngine {
 public:
  using Instant = FramePacer::Instant;

  // Redirects all windows to pixmaps, which lasts as long as the engine, and starts the thread. A server that
  // refuses that, or can't be decoded, gives an engine whose streams fail with the reason.
  // `onLost` is called once, on the main thread, when the connection is gone, before any stream fails.
  CaptureEngine(std::unique_ptr<x11::Connection> connection, x11::OwnClients& own,
                std::function<void()> onLost);

  // Ends the thread. Frames that are still held by someone stay valid.
  ~CaptureEngine();

  // Why streams can't start; set at creation, for good.
  const std::optional<Error>& refusal() const { return refusal_; }

  // For posting; may outlive the engine. Jobs run on the capture thread and may call what follows.
  const std::shared_ptr<Mailbox>& mailbox() const { return mailbox_; }

  Result<ShareableContent> content(ContentQuery query);
  Status start(std::shared_ptr<Delivery> delivery, const ContentFilter& filter,
               const StreamConfiguration& configuration);
  void stop(const std::shared_ptr<Delivery>& delivery);
  Status configure(const std::shared_ptr<Delivery>& delivery, const StreamConfiguration& configuration);
  Status setFilter(const std::shared_ptr<Delivery>& delivery, const ContentFilter& filter);

 private:
  using Workers = std::vector<std::unique_ptr<StreamWorker>>;

  std::optional<Error> prepare();

  void run(const std::stop_token& stopping);
  void wait(std::optional<Instant> until);
  std::optional<Instant> nextDue();

  bool canSleepThroughEvents(dispatch::Duration rest);

  // All that have arrived, or only those that a reply has brought along already; how many.
  void takeEvents();
  int takeReadEvents();
  void take(const xcb_generic_event_t& event);
  void take(const xcb_generic_error_t& error);
  void catchUp();
  void readWindows();
  void readMonitors();
  void refreshFilters();
  void lookWhereDue();
  void look(StreamWorker& worker, Instant now);
  void checkRefusals(StreamWorker& worker, Instant now);

  void end(StreamWorker& worker, const Error& error);
  void endAll(const Error& error);
  StreamWorker* find(const std::shared_ptr<Delivery>& delivery);
  Result<DeviceRect> monitorRect(const Display& display) const;
  std::optional<Error> trouble() const;

  std::unique_ptr<x11::Connection> connection_;
  x11::OwnClients& own_;
  std::function<void()> onLost_;
  std::optional<Error> refusal_;
  std::optional<VisualFormats> formats_;
  std::unique_ptr<StackWatcher> watcher_;
  ProcessDirectory processes_;
  std::vector<x11::Monitor> monitors_;
  bool monitorsOutdated_ = true;
  bool lost_ = false;
  bool hasMail_ = true;
  unsigned filteredRevision_ = 0;  // of the stack, when filters were last looked at
  unsigned filteredClients_ = 0;   // generation of our own clients then
  std::optional<Instant> lastRedirect_;
  ErrorJournal journal_;
  Workers workers_;
  Workers ended_;  // until nothing uses them any more
  std::shared_ptr<Mailbox> mailbox_ = std::make_shared<Mailbox>();
  std::jthread thread_;
};

}  // namespace velicor::screencapture
