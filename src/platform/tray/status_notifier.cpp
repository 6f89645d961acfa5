#include "platform/tray/status_notifier.h"

#include <utility>

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace velicor::tray {

namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

QString uniqueName() {
  static int made = 0;
  return QStringLiteral("velicor-status-item-%1").arg(++made);
}

// Nobody is to be started only to be asked.
QDBusMessage request(const QString& interface, const char* method, const QVariantList& arguments) {
  QDBusMessage message =
      QDBusMessage::createMethodCall(watcherName, watcherPath, interface, QLatin1String(method));
  message.setArguments(arguments);
  message.setAutoStartService(false);
  return message;
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
      bus_.asyncCall(request(watcherName, "RegisterStatusNotifierItem", {bus_.baseService()}));
  whenAnswered(call, replies_, [this](const QDBusMessage& answer) {
    if (answer.type() == QDBusMessage::ErrorMessage) return setPresence(Presence::noBusOrWatcher);
    askForHost();
  });
}

void StatusNotifier::askForHost() {
  const QDBusPendingCall call =
      bus_.asyncCall(request(QStringLiteral("org.freedesktop.DBus.Properties"), "Get",
                             {watcherName, QStringLiteral("IsStatusNotifierHostRegistered")}));
  whenAnswered(call, replies_, [this](const QDBusMessage& answer) {
    // Some that show items themselves have no such property.
    const bool known = answer.type() == QDBusMessage::ReplyMessage;
    const bool shown = !known || answer.arguments().value(0).value<QDBusVariant>().variant().toBool();
    setPresence(shown ? Presence::shown : Presence::noHost);
  });
}

void StatusNotifier::setPresence(Presence presence) {
  if (std::exchange(presence_, presence) != presence && presenceChanged) presenceChanged();
}

}  // namespace velicor::tray
