#include "platform/desktop/desktop.h"

#include <utility>

#include <QGuiApplication>

#include "platform/desktop/activation.h"
#include "platform/desktop/compositor.h"
#include "platform/desktop/display_server.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/desktop/pointer.h"
#include "platform/desktop/toolkit_window.h"
#include "platform/desktop/window_stack.h"

namespace velicor::desktop {

struct Desktop::Services {
  explicit Services(std::unique_ptr<x11::Connection> connection) : server(std::move(connection)) {}

  DisplayServer server;
  MonitorScreens screens{server};
  WindowStack windows{server};
  Pointer pointer{server, screens, windows};
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
