#pragma once

#include "platform/notifications/signal.h"

namespace velicor {

namespace desktop {
class Desktop;
}
namespace settings {
class Settings;
}

// What happens when the X server goes away: the settings are written, one line says so, and the process ends
// with exitServerLost, whichever of its connections notices first. The toolkit ends the process by itself when it
// does; that end is taken over too. One at a time; main thread.
class ServerLoss {
 public:
  static constexpr int exitServerLost = 70;

  ServerLoss(desktop::Desktop& desktop, settings::Settings& settings);
  ~ServerLoss();
  ServerLoss(const ServerLoss&) = delete;
  ServerLoss& operator=(const ServerLoss&) = delete;

 private:
  Subscription lost_;
};

}  // namespace velicor
