#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/geometry.h"
#include "platform/x11/connection.h"

namespace velicor::x11 {

// One monitor as the server describes it.
struct Monitor {
  std::uint32_t id = 0;  // its name atom: the display identifier
  std::string name;      // such as "DP-1"
  DeviceRect rect;       // in device pixels of the root window
  bool primary = false;

  friend bool operator==(const Monitor&, const Monitor&) = default;
};

// The active monitors in the server's order; may be empty. A server that can't list monitors gives one, the
// whole root window, with the root window's identifier as its own. Two round trips.
Result<std::vector<Monitor>> readMonitors(Connection& connection);

// Asks for events when monitors come, go or change; isMonitorChange() knows them. A monitor that is defined
// or deleted by hand shows only as a ConfigureNotify of the root window, for which the connection must have
// selected StructureNotify there.
void watchMonitors(Connection& connection);
bool isMonitorChange(const Connection& connection, const xcb_generic_event_t& event);

}  // namespace velicor::x11
