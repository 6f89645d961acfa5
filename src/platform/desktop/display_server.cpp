#include "platform/desktop/display_server.h"

#include <utility>

#include <QAbstractEventDispatcher>

namespace velicor::desktop {

DisplayServer::DisplayServer(std::unique_ptr<x11::Connection> connection)
    : connection_(std::move(connection)), notifier_(connection_->fileDescriptor(), QSocketNotifier::Read) {
  // Errors here are of windows that vanished between two requests; each user copes with what did not happen.
  connection_->setErrorHandler([](const xcb_generic_error_t&) {});
  connection_->setLossHandler([this] {
    notifier_.setEnabled(false);
    lost();
  });
  const std::uint32_t mask =
      XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_change_window_attributes(raw(), root(), XCB_CW_EVENT_MASK, &mask);
  QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { drain(); });

  // Fetching a reply takes in the events before it, and the descriptor stays silent about those.
  auto* dispatcher = QAbstractEventDispatcher::instance();
  const auto serve = [this] { drain(); };
  loop_ = {QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, &notifier_, serve),
           QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, &notifier_, serve)};
  connection_->flush();
}

DisplayServer::~DisplayServer() {
  for (const QMetaObject::Connection& connection : loop_)
    QObject::disconnect(connection);
}

void DisplayServer::drain() {
  if (draining_ || !notifier_.isEnabled()) return;
  draining_ = true;
  while (const x11::Owned<xcb_generic_event_t> next = connection_->nextEvent())
    event({*next});
  connection_->flush();
  draining_ = false;
}

}  // namespace velicor::desktop
