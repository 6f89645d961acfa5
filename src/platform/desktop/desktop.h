#pragma once

#include <memory>

#include "platform/base/error.h"
#include "platform/notifications/signal.h"

namespace velicor::desktop {

class Activation;
class Compositor;
class DisplayServer;
class MonitorScreens;
class Pointer;
class WindowStack;

// The desktop that the program runs on: its monitors, windows, mouse and compositing manager, over a
// connection of its own. Made once, after the toolkit's application object and before any window; outlives
// all panels. Main thread.
class Desktop {
 public:
  // The display of the environment. Fails where no server answers.
  static Result<std::unique_ptr<Desktop>> open();
  ~Desktop();
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  MonitorScreens& screens();
  WindowStack& windows();
  Pointer& pointer();
  Compositor& compositor();
  Activation& activation();

  // The connection, for the services that add to these.
  DisplayServer& server();

  // Called once, when the X server is gone.
  Signal<>& lost();

 private:
  struct Services;
  explicit Desktop(std::unique_ptr<Services> services);
  std::unique_ptr<Services> services_;
};

}  // namespace velicor::desktop
