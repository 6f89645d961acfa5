#pragma once

#include <vector>

#include <QTimer>

#include "platform/desktop/screen_layout.h"
#include "platform/notifications/signal.h"

class QWidget;

namespace velicor::desktop {

class Desktop;

// Brings our windows, shown or not, back to where users can get at them when the monitors have changed; see madeWhole().
// Once more a moment later, because window managers move windows then too. Not those that bypass the manager, nor menus
// and the like. Where the scale has changed, all of them keep their size in points. Main thread.
class WindowKeeper {
 public:
  // Subscribes to the screens: whoever places windows of its own after a change is made before. The desktop outlives it.
  explicit WindowKeeper(Desktop& desktop);

 private:
  std::vector<MonitorArea> monitors() const;
  void followScreens();
  void keepAll() const;
  void keep(QWidget& window) const;

  Desktop& desktop_;
  std::vector<MonitorArea> monitors_;  // the last ones; what bars take of them doesn't count
  QTimer settling_;                    // runs after a change
  Subscription screensChanged_;
};

}  // namespace velicor::desktop
