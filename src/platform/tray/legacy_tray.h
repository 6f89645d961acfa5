#pragma once

#include <functional>

#include <QSystemTrayIcon>

#include "platform/notifications/signal.h"
#include "platform/tray/icon.h"

namespace velicor::desktop {
class Desktop;
}

namespace velicor::tray {

// The status item in a tray of the older kind, which takes in a small window of ours; there while such a tray
// is. Only to be made while nobody takes status items over the message bus: the toolkit would turn to them.
// Main thread.
class LegacyTray {
 public:
  // The handler is called for every click. The desktop outlives this.
  LegacyTray(desktop::Desktop& desktop, const QString& title, const TemplateIcon& icon, std::function<void()> clicked);
  LegacyTray(const LegacyTray&) = delete;
  LegacyTray& operator=(const LegacyTray&) = delete;

  static bool isThere() { return QSystemTrayIcon::isSystemTrayAvailable(); }

 private:
  // What the tray says that icons on it should look like; invalid where it doesn't.
  QColor foreground() const;
  void tint();

  desktop::Desktop& desktop_;
  const TemplateIcon icon_;
  QSystemTrayIcon carrier_;
  Subscription events_;
};

}  // namespace velicor::tray
