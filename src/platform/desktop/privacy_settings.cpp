#include "platform/desktop/privacy_settings.h"

#include <array>
#include <cstdlib>

#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

namespace velicor::desktop {

namespace {

// By the names that desktops give themselves.
struct SettingsProgram {
  const char* desktop;
  const char* program;
  const char* page;  // may be empty
};

constexpr std::array programs{SettingsProgram{"GNOME", "gnome-control-center", "privacy"},
                              SettingsProgram{"KDE", "systemsettings", ""},
                              SettingsProgram{"X-Cinnamon", "cinnamon-settings", "privacy"},
                              SettingsProgram{"XFCE", "xfce4-settings-manager", ""},
                              SettingsProgram{"MATE", "mate-control-center", ""},
                              SettingsProgram{"LXQt", "lxqt-config", ""}};

bool start(const SettingsProgram& settings) {
  const QString program = QStandardPaths::findExecutable(QString::fromLatin1(settings.program));
  const QString page = QString::fromLatin1(settings.page);
  return !program.isEmpty() && QProcess::startDetached(program, page.isEmpty() ? QStringList() : QStringList(page));
}

}  // namespace

Status openPrivacySettings(Opener& opener, const std::string& url) {
  Status opened = opener.openUrl(url);
  if (opened) return opened;
  const QStringList running =
      qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(QLatin1Char(':'), Qt::SkipEmptyParts);
  for (const SettingsProgram& settings : programs) {
    if (running.contains(QLatin1String(settings.desktop)) && start(settings)) return {};
  }
  return opened;
}

}  // namespace velicor::desktop
