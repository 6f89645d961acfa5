#include "platform/x11/session_kind.h"

#include <algorithm>
#include <cstdlib>

#include "platform/base/product.h"
#include "platform/x11/monitors.h"

namespace velicor::x11 {

namespace {

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

std::string refusal() {
  return "this is a Wayland session, where a program can't read other programs' windows; log in to an X11 "
         "session to use " +
         std::string(product::name);
}

}  // namespace

SessionEnvironment sessionEnvironment() {
  return {variable("XDG_SESSION_TYPE"), variable("WAYLAND_DISPLAY")};
}

std::optional<std::string> waylandRefusal(const SessionEnvironment& environment) {
  const bool wayland = environment.sessionType == "wayland" || !environment.waylandDisplay.empty();
  return wayland ? std::optional(refusal()) : std::nullopt;
}

std::optional<std::string> waylandRefusal(Connection& connection) {
  if (connection.extensions().xwayland) return refusal();
  const auto monitors = readMonitors(connection);
  const bool bridged =
      monitors && std::any_of(monitors->begin(), monitors->end(),
                              [](const Monitor& monitor) { return monitor.name.starts_with("XWAYLAND"); });
  return bridged ? std::optional(refusal()) : std::nullopt;
}

}  // namespace velicor::x11
