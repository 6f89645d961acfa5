#include "platform/tray/status_notifier.h"

#include <utility>

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>

#include "platform/tray/status_area.h"

namespace velicor::tray {

namespace {

QString uniqueName() {
  static int made = 0;
  return QStringLiteral("velicor-status-item-%1").arg(++made);
}

// Calls the handler with the answer, unless the context has gone by then.
void whenAnswered(const QDBusPendingCall& call, QObject& context, std::function<void(const QDBusMessage&)> handler) {
  auto* answer = new QDBusPendingCallWatcher(call, &context);
  QObject::connect(answer, &QDBusPendingCallWatcher::finished, &context,
                   [handler = std::move(handler)](QDBusPendingCallWatcher* finished) {
                     finished->deleteLater();
                     handler(finished->reply());
                   });
}

}  // namespace

StatusNotifier::StatusNotifier(const QString& title, const TemplateIcon& icon)
    : connectionName_(uniqueName()), bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName_)) {
  if (!bus_.isConnected()) {
    presence_ = Presence::noBusOrWatcher;
    return;
  }
  menu_ = std::make_unique<MenuExporter>(bus_);
  item_ = std::make_unique<NotifierItem>(bus_, title, icon);
  watch();
  offer();
}

StatusNotifier::~StatusNotifier() {
  watcher_.reset();
  item_.reset();
  menu_.reset();
  QDBusConnection::disconnectFromBus(connectionName_);
}

void StatusNotifier::watch() {
  watcher_ = std::make_unique<QDBusServiceWatcher>(watcherName, bus_, QDBusServiceWatcher::WatchForOwnerChange);
  QObject::connect(watcher_.get(), &QDBusServiceWatcher::serviceRegistered, [this] { offer(); });
  QObject::connect(watcher_.get(), &QDBusServiceWatcher::serviceUnregistered,
                   [this] { setPresence(Presence::noBusOrWatcher); });
  hostsChanged_.setSingleShot(true);
  hostsChanged_.setInterval(0);
  hostsChanged_.callOnTimeout(&hostsChanged_, [this] { askForHost(); });
  for (const char* signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
    bus_.connect(watcherName, watcherPath, watcherName, QLatin1String(signal), &hostsChanged_, SLOT(start()));
  }
}

void StatusNotifier::offer() {
  const QDBusPendingCall call =
      bus_.asyncCall(watcherCall(watcherName, "RegisterStatusNotifierItem", {bus_.baseService()}));
  whenAnswered(call, replies_, [this](const QDBusMessage& answer) {
    if (answer.type() == QDBusMessage::ErrorMessage) return setPresence(Presence::noBusOrWatcher);
    askForHost();
  });
}

void StatusNotifier::askForHost() {
  whenAnswered(bus_.asyncCall(questionForHost()), replies_, [this](const QDBusMessage& answer) {
    setPresence(namesHost(answer) ? Presence::shown : Presence::noHost);
  });
}

void StatusNotifier::setPresence(Presence presence) {
  if (std::exchange(presence_, presence) != presence && presenceChanged) presenceChanged();
}

}  // namespace velicor::tray
