#include "update/updates.h"

#include <chrono>

#include <QNetworkAccessManager>
#include <QStandardPaths>

#include "platform/desktop/opener.h"
#include "platform/dispatch/clock.h"
#include "update/update_checker.h"

namespace velicor::updates {

namespace {

// $XDG_CACHE_HOME, with ~/.cache where the variable is not set or not absolute.
std::filesystem::path userCaches() {
  return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation).toStdString();
}

}  // namespace

struct Installation::Parts {
  Parts(settings::Settings& settings, const desktop::ScreenList& screens)
      : checker({.settings = settings,
                 .clock = dispatch::systemClock(),
                 .currentTime = std::chrono::system_clock::now,
                 .network = network,
                 .opener = desktop::systemOpener(),
                 .screens = screens,
                 .caches = userCaches()}) {}

  QNetworkAccessManager network;
  UpdateChecker::Installation checker;
};

Installation::Installation(settings::Settings& settings, const desktop::ScreenList& screens)
    : parts_(std::make_unique<Parts>(settings, screens)) {}

Installation::~Installation() = default;

bool areIncluded() { return true; }

void checkAtLaunch() { UpdateChecker::shared().checkAtLaunch(); }

void checkNow() { UpdateChecker::shared().checkNow(); }

}  // namespace velicor::updates
