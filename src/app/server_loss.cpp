#include "app/server_loss.h"

#include <cstdlib>
#include <string_view>

#include <unistd.h>

#include <QtGlobal>

#include "platform/desktop/desktop.h"
#include "platform/log/log.h"
#include "platform/settings/settings.h"

namespace velicor {

namespace {

settings::Settings* settingsToSave = nullptr;
QtMessageHandler toolkitMessages = nullptr;

// Nothing that the process still holds can be put in order without a server: whatever is flushed, it ends
// here and now, without destructors.
[[noreturn]] void endWithoutServer() {
  settingsToSave->flush();
  log::general("the X server went away");
  _exit(ServerLoss::exitServerLost);
}

// The toolkit calls exit() when its connection breaks.
void atProcessExit() {
  if (settingsToSave) endWithoutServer();
}

// It also has a line of its own to say about it, which ours replaces.
void passOnMessages(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  if (settingsToSave && text.startsWith(QLatin1String("The X11 connection broke"))) return;
  toolkitMessages(type, context, text);
}

}  // namespace

ServerLoss::ServerLoss(desktop::Desktop& desktop, settings::Settings& settings)
    : lost_(desktop.lost().subscribe([] { endWithoutServer(); })) {
  settingsToSave = &settings;
  toolkitMessages = qInstallMessageHandler(passOnMessages);
  static const int registered = std::atexit(atProcessExit);
  static_cast<void>(registered);
}

ServerLoss::~ServerLoss() {
  settingsToSave = nullptr;
  qInstallMessageHandler(toolkitMessages);
}

}  // namespace velicor
