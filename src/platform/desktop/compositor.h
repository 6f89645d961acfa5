#pragma once

#include "platform/notifications/signal.h"

namespace velicor::desktop {

class DisplayServer;

// Whether a compositing manager runs on the screen. Without one, a window's transparent parts are black. Main
// thread.
class Compositor {
 public:
  explicit Compositor(DisplayServer& server);

  bool isPresent() const { return present_; }

  // After isPresent() has changed.
  Signal<> changed;

 private:
  void refresh();

  DisplayServer& server_;
  Subscription events_;
  bool present_ = false;
};

}  // namespace velicor::desktop
