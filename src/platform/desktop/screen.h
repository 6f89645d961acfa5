#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/geometry.h"

namespace velicor::desktop {

// One monitor as it was when it was read: a plain value, not a live object.
struct Screen {
  std::string name;  // the monitor's name, such as "DP-1"; shown in reports only

  // The capture service's identifier of the same monitor; none where the server names no monitors.
  std::optional<std::uint32_t> displayID;

  DesktopRect frame;              // the whole monitor, in desktop points
  DesktopRect visibleFrame;       // frame without the bars that panels reserve
  double backingScaleFactor = 1;  // device pixels per point
  DeviceRect deviceFrame;         // the same monitor in device pixels of the root window

  friend bool operator==(const Screen&, const Screen&) = default;
};

// The monitors and which of them is meant by "the main one".
class ScreenList {
 public:
  virtual ~ScreenList() = default;

  // In the server's order; may be empty. Main thread.
  virtual std::vector<Screen> screens() const = 0;

  // The monitor of the focused window, else the primary one, else the first; none when there is none.
  virtual std::optional<Screen> mainScreen() const = 0;
};

}  // namespace velicor::desktop
