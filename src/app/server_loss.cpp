#include "app/server_loss.h"

#include <atomic>
#include <cstdlib>

#include <unistd.h>

#include <QtGlobal>

#include "platform/desktop/desktop.h"
#include "platform/desktop/toolkit_loss.h"
#include "platform/log/log.h"
#include "platform/settings/settings.h"

namespace velicor {

namespace {

settings::Settings* settingsToSave = nullptr;  // main thread
std::atomic<bool> watching = false;
QtMessageHandler toolkitMessages = nullptr;

// The toolkit has a line of its own to say about a broken connection, which ours replaces.
void passOnMessages(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  if (watching && text.startsWith(QLatin1String("The X11 connection broke"))) return;
  toolkitMessages(type, context, text);
}

}  // namespace

ServerLoss::ServerLoss(desktop::Desktop& desktop, settings::Settings& settings)
    : lost_(desktop.lost().subscribe(endProcess)) {
  settingsToSave = &settings;
  toolkitMessages = qInstallMessageHandler(passOnMessages);
  watching = true;
  desktop::toolkit::setLossHandler(endProcess);
  // The toolkit calls exit() when its connection breaks.
  static const int registered = std::atexit(endProcess);
  static_cast<void>(registered);
}

ServerLoss::~ServerLoss() {
  settingsToSave = nullptr;
  watching = false;
  desktop::toolkit::setLossHandler(nullptr);
  qInstallMessageHandler(toolkitMessages);
}

// Nothing that the process still holds can be put in order without a server: with the settings written it ends
// here and now, without destructors.
void ServerLoss::endProcess() {
  if (!settingsToSave) return;
  settingsToSave->flush();
  log::general("the X server went away");
  _exit(exitServerLost);
}

}  // namespace velicor
