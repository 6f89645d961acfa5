#pragma once

#include "platform/notifications/signal.h"

namespace velicor {

namespace desktop {
class Desktop;
}
namespace settings {
class Settings;
}

// What happens when the X server goes away, or ends a connection of ours: the settings are written, one line says
// so, and the process ends with exitServerLost, whichever of its connections notices first. The toolkit ends the
// process by itself when it does; that end is taken over too. One at a time; main thread.
class ServerLoss {
 public:
  static constexpr int exitServerLost = 70;

  ServerLoss(desktop::Desktop& desktop, settings::Settings& settings);
  ~ServerLoss();
  ServerLoss(const ServerLoss&) = delete;
  ServerLoss& operator=(const ServerLoss&) = delete;

  // For connections that this object does not know of. Does nothing while there is no such object.
  static void endProcess();

 private:
  Subscription lost_;
};

}  // namespace velicor
