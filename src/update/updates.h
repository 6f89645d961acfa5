#pragma once

#include <memory>

namespace velicor {

namespace desktop {
class ScreenList;
}
namespace settings {
class Settings;
}

// The update checks as the rest of the program sees them. A build without them (VELICOR_UPDATE_CHECKS=OFF)
// has the same functions; they do nothing, and there is nothing behind them that could use the network.
namespace updates {

// Whether this build looks for updates. Where it doesn't, menus have no item for it.
bool areIncluded();

// What the checks stand on, with the system's own network, clocks and folders. Kept by main() while the
// program runs; the references outlive it.
class Installation {
 public:
  Installation(settings::Settings& settings, const desktop::ScreenList& screens);
  ~Installation();
  Installation(const Installation&) = delete;
  Installation& operator=(const Installation&) = delete;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

// UpdateChecker::shared() of the same names. Main thread, with an installation.
void checkAtLaunch();
void checkNow();

}  // namespace updates

}  // namespace velicor
