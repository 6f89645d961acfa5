#include "platform/screencapture/x11/capture_engine.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <utility>

#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#include "platform/screencapture/x11/content_listing.h"
#include "platform/screencapture/x11/redirection.h"

namespace velicor::screencapture {

namespace {

using dispatch::Duration;

constexpr const char* threadName = "velicor.x11cap";

// Replies bring further events, which may ask for further questions. On a busy screen this never ends; what
// is left over is caught up with before the next frame.
constexpr int mostRounds = 4;

// Events of a reading after which there are probably more.
constexpr int fullReading = 64;

// A connection that is lost meanwhile is noticed this much later.
constexpr Duration longestSleep = std::chrono::milliseconds(150);

constexpr Duration redirectPause = std::chrono::seconds(1);

Error connectionLostError() {
  return {std::string(errorDomain), connectionLost, "The connection to the X server was lost"};
}

timespec timespecOf(Duration duration) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(duration);
  return {seconds.count(), (duration - seconds).count()};
}

}  // namespace

CaptureEngine::CaptureEngine(std::unique_ptr<x11::Connection> connection, x11::OwnClients& own,
                             std::function<void()> onLost)
    : connection_(std::move(connection)),
      own_(own),
      onLost_(std::move(onLost)),
      processes_(*connection_, own) {
  refusal_ = prepare();
  connection_->setErrorHandler([this](const xcb_generic_error_t& error) { take(error); });
  thread_ = std::jthread([this](const std::stop_token& stopping) { run(stopping); });
}

CaptureEngine::~CaptureEngine() {
  thread_.request_stop();
  mailbox_->wake();
  thread_.join();
}

std::optional<Error> CaptureEngine::prepare() {
  if (auto refused = redirectWindows(*connection_)) return refused;
  auto formats = VisualFormats::read(*connection_);
  if (!formats) return formats.error();
  formats_ = std::move(*formats);
  watcher_ = std::make_unique<StackWatcher>(*connection_, *formats_);
  x11::watchMonitors(*connection_);
  return std::nullopt;
}

void CaptureEngine::run(const std::stop_token& stopping) {
  pthread_setname_np(pthread_self(), threadName);
  for (;;) {
    if (std::exchange(hasMail_, false)) {
      for (const Mailbox::Job& job : mailbox_->takeAll())
        job();
    }
    // Only now: taking the mail takes what was to wake us for the end too.
    if (stopping.stop_requested()) break;
    takeEvents();
    if (!lost_ && watcher_ && watcher_->isOverdue()) catchUp();
    lookWhereDue();
    ended_.clear();
    // Replies may have taken in events that the descriptor does not show any more.
    takeReadEvents();
    wait(nextDue());
  }
  mailbox_->close();
  endAll(connectionLostError());
  for (const Mailbox::Job& job : mailbox_->takeAll())
    job();
  workers_.clear();
  ended_.clear();
}

void CaptureEngine::wait(std::optional<Instant> until) {
  if (!lost_) connection_->flush();
  std::array<pollfd, 2> files{{{mailbox_->fileDescriptor(), POLLIN, 0}, {-1, POLLIN, 0}}};
  const Duration rest =
      until ? std::max(Duration::zero(), Duration(*until - dispatch::systemClock().now())) : Duration::max();
  if (!lost_ && !canSleepThroughEvents(rest)) files[1].fd = connection_->fileDescriptor();
  const timespec timeout = timespecOf(rest);
  hasMail_ =
      ppoll(files.data(), files.size(), until ? &timeout : nullptr, nullptr) > 0 && files[0].revents != 0;
}

// Where every stream has its time already, no event can make one look earlier.
bool CaptureEngine::canSleepThroughEvents(Duration rest) {
  if (workers_.empty() || rest > longestSleep) return false;
  return std::all_of(workers_.begin(), workers_.end(),
                     [](const auto& worker) { return worker->due().has_value(); });
}

std::optional<CaptureEngine::Instant> CaptureEngine::nextDue() {
  std::optional<Instant> earliest;
  for (const auto& worker : workers_) {
    const auto due = worker->due();
    if (due && (!earliest || *due < *earliest)) earliest = due;
  }
  return earliest;
}

void CaptureEngine::takeEvents() {
  takeReadEvents();
  // One reading takes in a part of what a storm of events has left.
  for (bool more = true; more && !lost_;) {
    const auto event = connection_->nextEvent();
    if (event) take(*event);
    more = takeReadEvents() >= fullReading;
  }
}

int CaptureEngine::takeReadEvents() {
  if (lost_) return 0;
  int taken = 0;
  for (; const auto event = connection_->queuedEvent(); ++taken)
    take(*event);
  if (!connection_->isLost()) return taken;
  lost_ = true;
  if (onLost_) dispatch::MainQueue::shared().async(std::exchange(onLost_, {}));
  endAll(connectionLostError());
  return taken;
}

void CaptureEngine::take(const xcb_generic_event_t& event) {
  if (x11::isSent(event)) return;
  if (x11::isMonitorChange(*connection_, event)) monitorsOutdated_ = true;
  const bool stirs = watcher_ && watcher_->take(event);
  for (const auto& worker : workers_) {
    worker->take(event);
    if (stirs || monitorsOutdated_) worker->stir();
  }
}

void CaptureEngine::take(const xcb_generic_error_t& error) {
  for (const auto& worker : workers_) {
    if (worker->take(error)) return;
  }
  journal_.take(*connection_, error);
}

// Asks the server until the model is as new as the events are.
void CaptureEngine::catchUp() {
  for (int round = 0; round < mostRounds; ++round) {
    if (std::exchange(monitorsOutdated_, false)) readMonitors();
    readWindows();
    takeReadEvents();
    if (lost_ || (!watcher_->isOutdated() && !monitorsOutdated_)) return;
  }
}

void CaptureEngine::readWindows() {
  if (watcher_->isOutdated()) watcher_->refresh();
  refreshFilters();
}

void CaptureEngine::readMonitors() {
  auto monitors = x11::readMonitors(*connection_);
  if (!monitors) return;
  monitors_ = std::move(*monitors);
  for (std::size_t i = workers_.size(); i-- > 0;) {
    const auto rect = monitorRect(workers_[i]->filter().display);
    if (rect) {
      workers_[i]->setMonitor(*rect);
    } else {
      end(*workers_[i], rect.error());
    }
  }
}

// Windows of clients that are new belong to processes that are not known yet.
void CaptureEngine::refreshFilters() {
  if (filteredRevision_ == watcher_->stack().revision() && filteredClients_ == own_.generation()) return;
  filteredRevision_ = watcher_->stack().revision();
  filteredClients_ = own_.generation();
  const auto filtersOthers = [](const auto& worker) {
    const auto& out = worker->filter().excludedApplications;
    return std::any_of(out.begin(), out.end(), [](const auto& each) { return each.processID != getpid(); });
  };
  if (std::any_of(workers_.begin(), workers_.end(), filtersOthers)) {
    const auto windows = watcher_->stack().bottomToTop();
    const bool allKnown = std::all_of(windows.begin(), windows.end(), [this](const StackedWindow* window) {
      return processes_.knows(window->client != 0 ? window->client : window->id);
    });
    if (!allKnown) processes_.refresh();
  }
  for (const auto& worker : workers_)
    worker->refreshFilter();
}

void CaptureEngine::lookWhereDue() {
  const auto due = nextDue();
  if (lost_ || !due || *due > dispatch::systemClock().now()) return;
  catchUp();
  const Instant now = dispatch::systemClock().now();
  for (std::size_t i = workers_.size(); i-- > 0;) {
    const auto workerDue = workers_[i]->due();
    if (workerDue && *workerDue <= now) look(*workers_[i], now);
    if (lost_) return;
  }
  if (!watcher_->isOutdated()) return;
  for (const auto& worker : workers_)
    worker->stir();
}

void CaptureEngine::look(StreamWorker& worker, Instant now) {
  Status looked = worker.look(now);
  takeReadEvents();
  while (!lost_ && worker.hasMissed()) {
    readWindows();
    looked = worker.look(now);
    takeReadEvents();
  }
  if (lost_) return;
  if (!looked) return end(worker, looked.error());
  checkRefusals(worker, now);
}

// A window that is there has no pixmap: someone took the redirection away.
void CaptureEngine::checkRefusals(StreamWorker& worker, Instant now) {
  const auto refused = worker.takeRefused();
  if (lastRedirect_ && now - *lastRedirect_ < redirectPause) return;
  // It may have been away for a moment only. The server keeps a record of each redirection.
  const bool lostRedirect = std::any_of(refused.begin(), refused.end(), [this](WindowId id) {
    const StackedWindow* window = watcher_->stack().find(id);
    return window && window->viewable && !isRedirected(*connection_, id);
  });
  if (!lostRedirect) return;
  lastRedirect_ = now;
  if (const auto refusal = redirectWindows(*connection_)) return end(worker, *refusal);
  worker.stir();
}

void CaptureEngine::end(StreamWorker& worker, const Error& error) {
  const auto place =
      std::find_if(workers_.begin(), workers_.end(), [&](const auto& each) { return each.get() == &worker; });
  const std::shared_ptr<Delivery> delivery = worker.delivery();
  ended_.push_back(std::move(*place));
  workers_.erase(place);
  delivery->fail(error);
}

void CaptureEngine::endAll(const Error& error) {
  while (!workers_.empty())
    end(*workers_.back(), error);
}

StreamWorker* CaptureEngine::find(const std::shared_ptr<Delivery>& delivery) {
  const auto place = std::find_if(workers_.begin(), workers_.end(),
                                  [&](const auto& worker) { return worker->delivery() == delivery; });
  return place == workers_.end() ? nullptr : place->get();
}

Result<DeviceRect> CaptureEngine::monitorRect(const Display& display) const {
  const auto place = std::find_if(monitors_.begin(), monitors_.end(), [&](const x11::Monitor& monitor) {
    return monitor.id == display.displayID;
  });
  if (place != monitors_.end()) return place->rect;
  return failure(errorDomain, displayUnavailable, "The display is not connected");
}

std::optional<Error> CaptureEngine::trouble() const {
  if (lost_) return connectionLostError();
  return refusal_;
}

Status CaptureEngine::start(std::shared_ptr<Delivery> delivery, const ContentFilter& filter,
                            const StreamConfiguration& configuration) {
  if (const auto error = trouble()) return tl::make_unexpected(*error);
  if (find(delivery)) return failure(errorDomain, serverRefused, "The stream is already running");
  takeEvents();
  catchUp();
  if (const auto error = trouble()) return tl::make_unexpected(*error);
  const auto monitor = monitorRect(filter.display);
  if (!monitor) return tl::make_unexpected(monitor.error());
  processes_.refresh();
  const CaptureContext context{*connection_, *formats_, *watcher_, processes_};
  workers_.push_back(std::make_unique<StreamWorker>(context, std::move(delivery), filter, configuration,
                                                    *monitor, [mailbox = mailbox_] { mailbox->wake(); }));
  return {};
}

void CaptureEngine::stop(const std::shared_ptr<Delivery>& delivery) {
  std::erase_if(workers_, [&](const auto& worker) { return worker->delivery() == delivery; });
}

Status CaptureEngine::configure(const std::shared_ptr<Delivery>& delivery,
                                const StreamConfiguration& configuration) {
  StreamWorker* worker = find(delivery);
  if (!worker) return failure(errorDomain, serverRefused, "The stream is not running");
  worker->setConfiguration(configuration);
  return {};
}

Status CaptureEngine::setFilter(const std::shared_ptr<Delivery>& delivery, const ContentFilter& filter) {
  StreamWorker* worker = find(delivery);
  if (!worker) return failure(errorDomain, serverRefused, "The stream is not running");
  const auto monitor = monitorRect(filter.display);
  if (!monitor) return tl::make_unexpected(monitor.error());
  processes_.refresh();
  worker->setFilter(filter, *monitor);
  return {};
}

Result<ShareableContent> CaptureEngine::content(ContentQuery query) {
  if (const auto error = trouble()) return tl::make_unexpected(*error);
  takeEvents();
  catchUp();
  processes_.refresh();
  if (const auto error = trouble()) return tl::make_unexpected(*error);
  ShareableContent content = listContent(*connection_, query, watcher_->stack(), processes_, monitors_);
  if (const auto error = trouble()) return tl::make_unexpected(*error);
  return content;
}

}  // namespace velicor::screencapture
