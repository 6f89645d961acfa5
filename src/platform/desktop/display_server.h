#pragma once

#include <memory>
#include <vector>

#include <QMetaObject>
#include <QSocketNotifier>

#include "platform/notifications/signal.h"
#include "platform/x11/connection.h"

namespace velicor::desktop {

// One event, valid while it is being told.
struct ServerEvent {
  const xcb_generic_event_t& raw;

  std::uint8_t type() const { return x11::eventType(raw); }
  template <typename Event>
  const Event& as() const {
    return reinterpret_cast<const Event&>(raw);
  }
};

// The desktop services' own connection to the X server, served by the main thread's event loop. It watches
// the root window: its children, its geometry and its properties. Main thread.
class DisplayServer {
 public:
  explicit DisplayServer(std::unique_ptr<x11::Connection> connection);
  ~DisplayServer();
  DisplayServer(const DisplayServer&) = delete;
  DisplayServer& operator=(const DisplayServer&) = delete;

  x11::Connection& connection() { return *connection_; }
  xcb_connection_t* raw() const { return connection_->raw(); }
  xcb_window_t root() const { return connection_->root(); }
  xcb_atom_t atom(x11::Atom name) const { return connection_->atom(name); }

  // Every event, in order.
  Signal<const ServerEvent&> event;

  // Once, when the server is gone.
  Signal<> lost;

 private:
  void drain();

  std::unique_ptr<x11::Connection> connection_;
  QSocketNotifier notifier_;
  std::vector<QMetaObject::Connection> loop_;
  bool draining_ = false;
};

}  // namespace velicor::desktop
