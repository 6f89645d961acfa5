#pragma once

#include <functional>
#include <memory>

#include <QDBusConnection>
#include <QTimer>

#include "platform/tray/menu_exporter.h"
#include "platform/tray/notifier_item.h"

class QDBusPendingCall;
class QDBusServiceWatcher;

namespace velicor::tray {

// Offers the status item to the desktop's panel over the session's message bus: at once where there is one,
// later where it starts later, and again when it starts anew. Never blocks but while it is made. Main thread.
class StatusNotifier {
 public:
  // Whether somebody takes status items, and whether anybody shows them.
  enum class Presence { unknown, noBusOrWatcher, noHost, shown };

  StatusNotifier(const QString& title, const TemplateIcon& icon);
  ~StatusNotifier();
  StatusNotifier(const StatusNotifier&) = delete;
  StatusNotifier& operator=(const StatusNotifier&) = delete;

  Presence presence() const { return presence_; }
  std::function<void()> presenceChanged;

  // None where there is no bus.
  MenuExporter* menu() { return menu_.get(); }
  NotifierItem* item() { return item_.get(); }

 private:
  void watch();
  void offer();
  void askForHost();
  void setPresence(Presence presence);

  const QString connectionName_;
  QDBusConnection bus_;
  std::unique_ptr<MenuExporter> menu_;
  std::unique_ptr<NotifierItem> item_;
  std::unique_ptr<QDBusServiceWatcher> watcher_;
  QTimer hostsChanged_;  // receives the bus's signals
  QObject replies_;      // what answers under way end with
  Presence presence_ = Presence::unknown;
};

}  // namespace velicor::tray
