#include "platform/desktop/desktop.h"

#include <cstdint>
#include <utility>

#include <QGuiApplication>
#include <QInputEvent>

#include "platform/desktop/activation.h"
#include "platform/desktop/compositor.h"
#include "platform/desktop/display_server.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/desktop/pointer.h"
#include "platform/desktop/toolkit_window.h"
#include "platform/desktop/window_stack.h"

namespace velicor::desktop {

namespace {

// The toolkit's windows get their keys and clicks on a connection of its own; their time is the server's.
class InputTimes : public QObject {
 public:
  explicit InputTimes(Pointer& pointer) : pointer_(pointer) { qApp->installEventFilter(this); }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    switch (event->type()) {
      case QEvent::ShortcutOverride:
        // All that is seen of a key which is a shortcut.
        note(*event);
        break;
      case QEvent::KeyPress:
      case QEvent::KeyRelease:
      case QEvent::MouseButtonPress:
      case QEvent::MouseButtonRelease:
        if (watched->isWindowType() && event->spontaneous()) note(*event);
        break;
      default:
        break;
    }
    return false;
  }

 private:
  void note(const QEvent& event) {
    const auto time = static_cast<std::uint32_t>(static_cast<const QInputEvent&>(event).timestamp());
    if (time != 0) pointer_.noteTime(time);
  }

  Pointer& pointer_;
};

}  // namespace

struct Desktop::Services {
  explicit Services(std::unique_ptr<x11::Connection> connection) : server(std::move(connection)) {}

  DisplayServer server;
  MonitorScreens screens{server};
  WindowStack windows{server};
  Pointer pointer{server, screens, windows};
  InputTimes inputTimes{pointer};
  Compositor compositor{server};
  Activation activation;
};

Result<std::unique_ptr<Desktop>> Desktop::open() {
  toolkit::joinOwnClients();
  auto connection = x11::Connection::open();
  if (!connection) return tl::make_unexpected(connection.error());
  return std::unique_ptr<Desktop>(new Desktop(std::make_unique<Services>(std::move(*connection))));
}

Desktop::Desktop(std::unique_ptr<Services> services) : services_(std::move(services)) {}
Desktop::~Desktop() = default;

MonitorScreens& Desktop::screens() { return services_->screens; }
WindowStack& Desktop::windows() { return services_->windows; }
Pointer& Desktop::pointer() { return services_->pointer; }
Compositor& Desktop::compositor() { return services_->compositor; }
Activation& Desktop::activation() { return services_->activation; }
DisplayServer& Desktop::server() { return services_->server; }
Signal<>& Desktop::lost() { return services_->server.lost; }

}  // namespace velicor::desktop
