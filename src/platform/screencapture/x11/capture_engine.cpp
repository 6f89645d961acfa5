#include "platform/screencapture/x11/capture_engine.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <utility>

#include <poll.h>
#include <pthread.h>
#include <unistd.h>
#include <xcb/composite.h>

#include "platform/base/product.h"
#include "platform/log/log.h"
#include "platform/x11/properties.h"

namespace velicor::screencapture {

namespace {

using dispatch::Duration;

constexpr const char* threadName = "velicor.x11cap";

// Replies bring further events, which may ask for further questions. On a busy screen this never ends; what
// is left over is caught up with before the next frame.
constexpr int mostRounds = 4;

constexpr Duration redirectPause = std::chrono::seconds(1);

Error connectionLostError() {
  return {std::string(errorDomain), connectionLost, "The connection to the X server was lost"};
}

timespec timespecOf(Duration duration) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(duration);
  return {seconds.count(), (duration - seconds).count()};
}

// Errors that come with windows vanishing under our hands: each request for one that is gone fails, and so do
// those that built on it. Nothing is lost by them.
bool isBenign(const x11::Extensions& all, const xcb_generic_error_t& error) {
  switch (error.error_code) {
    case XCB_WINDOW:
    case XCB_PIXMAP:
    case XCB_DRAWABLE:
      return true;
    case XCB_MATCH:
      return error.major_code == all.composite.majorOpcode || error.major_code == all.render.majorOpcode;
    default:
      return error.error_code == all.damage.firstError || error.error_code == all.fixes.firstError ||
             error.error_code == all.render.firstError + 1;  // no such damage, region or picture
  }
}

}  // namespace

CaptureEngine::CaptureEngine(std::unique_ptr<x11::Connection> connection, x11::OwnClients& own)
    : connection_(std::move(connection)), own_(own), processes_(*connection_, own) {
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
  if (auto refused = redirect()) return refused;
  auto formats = VisualFormats::read(*connection_);
  if (!formats) return formats.error();
  formats_ = std::move(*formats);
  watcher_ = std::make_unique<StackWatcher>(*connection_, *formats_);
  x11::watchMonitors(*connection_);
  return std::nullopt;
}

// Every window draws into a pixmap of its own from now on, the parts too that others cover. A compositing
// manager that does the same is not disturbed, and may come and go.
std::optional<Error> CaptureEngine::redirect() {
  const x11::Extensions& all = connection_->extensions();
  const bool complete = all.composite.atLeast(0, 2) && all.damage.present && all.fixes.atLeast(2, 0) &&
                        all.render.atLeast(0, 10);
  if (!complete) {
    // A client that the server does not trust is told that there are no such extensions, and may not read.
    const auto pixel = connection_->reply(
        xcb_get_image_reply,
        xcb_get_image(connection_->raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, connection_->root(), 0, 0, 1, 1, ~0U));
    if (!pixel) {
      return Error{std::string(errorDomain), userDeclined, "The X server does not let this program read the screen"};
    }
    return Error{std::string(errorDomain), serverRefused,
                 "The X server lacks an extension that is needed (Composite, Damage, XFixes, Render)"};
  }
  const Status redirected = connection_->check(xcb_composite_redirect_subwindows_checked(
      connection_->raw(), connection_->root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC));
  if (redirected) return std::nullopt;
  const int code = redirected.error().code == XCB_ACCESS ? userDeclined : serverRefused;
  return Error{std::string(errorDomain), code,
               "The X server does not let this program read windows: " + redirected.error().description};
}

void CaptureEngine::run(std::stop_token stopping) {
  pthread_setname_np(pthread_self(), threadName);
  while (!stopping.stop_requested()) {
    for (const Mailbox::Job& job : mailbox_->takeAll()) job();
    takeEvents();
    lookWhereDue();
    ended_.clear();
    // Replies may have taken in events that the descriptor does not show any more.
    takeEvents();
    wait(nextDue());
  }
  mailbox_->close();
  endAll(connectionLostError());
  for (const Mailbox::Job& job : mailbox_->takeAll()) job();
  workers_.clear();
  ended_.clear();
}

void CaptureEngine::wait(std::optional<Instant> until) {
  if (!lost_) connection_->flush();
  std::array<pollfd, 2> files{{{mailbox_->fileDescriptor(), POLLIN, 0}, {-1, POLLIN, 0}}};
  if (!lost_) files[1].fd = connection_->fileDescriptor();
  timespec timeout{};
  if (until) {
    const Instant now = dispatch::systemClock().now();
    timeout = timespecOf(*until <= now ? Duration::zero() : Duration(*until - now));
  }
  ppoll(files.data(), files.size(), until ? &timeout : nullptr, nullptr);
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
  if (lost_) return;
  while (const auto event = connection_->nextEvent()) take(*event);
  if (!connection_->isLost()) return;
  lost_ = true;
  endAll(connectionLostError());
}

void CaptureEngine::take(const xcb_generic_event_t& event) {
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
  if (isBenign(connection_->extensions(), error)) return;
  if (!reported_.emplace(error.error_code, error.major_code, error.minor_code).second) return;
  log::Logger("x11").error("unexpected " + connection_->describe(error));
}

// Asks the server until the model is as new as the events are.
void CaptureEngine::catchUp() {
  for (int round = 0; round < mostRounds; ++round) {
    if (std::exchange(monitorsOutdated_, false)) readMonitors();
    if (watcher_->isOutdated()) watcher_->refresh();
    refreshFilters();
    takeEvents();
    if (lost_ || (!watcher_->isOutdated() && !monitorsOutdated_)) return;
  }
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
  for (const auto& worker : workers_) worker->refreshFilter();
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
  for (const auto& worker : workers_) worker->stir();
}

void CaptureEngine::look(StreamWorker& worker, Instant now) {
  const Status looked = worker.look(now);
  takeEvents();
  if (lost_) return;
  if (!looked) return end(worker, looked.error());
  checkRefusals(worker, now);
}

// A window that is there has no pixmap: someone took the redirection away.
void CaptureEngine::checkRefusals(StreamWorker& worker, Instant now) {
  const auto refused = worker.takeRefused();
  const bool lostRedirect = std::any_of(refused.begin(), refused.end(), [this](WindowId id) {
    const StackedWindow* window = watcher_->stack().find(id);
    return window && window->viewable;
  });
  if (!lostRedirect || (lastRedirect_ && now - *lastRedirect_ < redirectPause)) return;
  lastRedirect_ = now;
  if (const auto refusal = redirect()) return end(worker, *refusal);
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
  while (!workers_.empty()) end(*workers_.back(), error);
}

StreamWorker* CaptureEngine::find(const std::shared_ptr<Delivery>& delivery) {
  const auto place = std::find_if(workers_.begin(), workers_.end(),
                                  [&](const auto& worker) { return worker->delivery() == delivery; });
  return place == workers_.end() ? nullptr : place->get();
}

Result<DeviceRect> CaptureEngine::monitorRect(const Display& display) const {
  const auto place = std::find_if(monitors_.begin(), monitors_.end(),
                                  [&](const x11::Monitor& monitor) { return monitor.id == display.displayID; });
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
  workers_.push_back(std::make_unique<StreamWorker>(context, std::move(delivery), filter, configuration, *monitor,
                                                    [mailbox = mailbox_] { mailbox->wake(); }));
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
  const std::set<WindowId> desktops = query.excludingDesktopWindows ? desktopWindows() : std::set<WindowId>();
  if (const auto error = trouble()) return tl::make_unexpected(*error);

  ShareableContent content;
  for (const x11::Monitor& monitor : monitors_) content.displays.push_back({monitor.id});
  std::set<pid_t> listed;
  for (const StackedWindow* window : watcher_->stack().bottomToTop()) {
    const WindowId owner = window->client != 0 ? window->client : window->id;
    const bool own = processes_.isOwn(owner);
    // Ours are listed once they can be seen: before that there is nothing to leave out.
    if (!isTopLevelOf(*window, own || query.onScreenWindowsOnly) || desktops.contains(window->id)) continue;
    const auto process = processes_.processOf(owner);
    const bool unlisted = process && (own || *process != getpid()) && listed.insert(*process).second;
    if (unlisted) content.applications.push_back({*process, own ? std::string(product::identifier) : ""});
  }
  return content;
}

bool CaptureEngine::isTopLevelOf(const StackedWindow& window, bool onScreenOnly) const {
  return window.drawable && (!onScreenOnly || (window.viewable && !watcher_->stack().isHidden(window)));
}

std::set<WindowId> CaptureEngine::desktopWindows() {
  const xcb_atom_t type = connection_->atom(x11::Atom::netWmWindowType);
  std::vector<std::pair<WindowId, xcb_get_property_cookie_t>> asked;
  for (const StackedWindow* window : watcher_->stack().bottomToTop()) {
    const WindowId owner = window->client != 0 ? window->client : window->id;
    asked.emplace_back(window->id, x11::askProperty(*connection_, owner, type));
  }
  std::set<WindowId> desktops;
  for (const auto& [id, cookie] : asked) {
    const auto types = x11::propertyNumbers(*connection_, cookie);
    const bool isDesktop = std::find(types.begin(), types.end(),
                                     connection_->atom(x11::Atom::netWmWindowTypeDesktop)) != types.end();
    if (isDesktop) desktops.insert(id);
  }
  return desktops;
}

}  // namespace velicor::screencapture
