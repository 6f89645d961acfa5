#pragma once

#include <optional>

#include "platform/base/geometry.h"

class QMouseEvent;

namespace velicor::desktop {

class Panel;

// The mouse moves a panel that it has taken hold of. After the first few pixels a window manager that offers to
// move windows goes on with it; else the panel follows the mouse by itself. Main thread.
class PanelDrag {
 public:
  explicit PanelDrag(Panel& panel) : panel_(panel) {}

  void press(const QMouseEvent& event);
  void move(const QMouseEvent& event);
  void release() { start_.reset(); }

 private:
  struct Start {
    DesktopPoint mouse;
    DesktopRect frame;
    bool moving = false;
  };

  Panel& panel_;
  std::optional<Start> start_;
};

}  // namespace velicor::desktop
