#include "platform/tray/status_area.h"

#include <optional>
#include <string>

#include <QDBusConnection>
#include <QDBusVariant>

namespace velicor::tray {

namespace {

constexpr int answerPatience = 1000;  // milliseconds for each answer

bool isAnswer(const QDBusMessage& message) { return message.type() == QDBusMessage::ReplyMessage; }

// None where nobody takes items.
std::optional<StatusArea> onTheBus(const QDBusConnection& bus) {
  if (!bus.isConnected()) return std::nullopt;
  const QDBusMessage ping = watcherCall(QStringLiteral("org.freedesktop.DBus.Peer"), "Ping", {});
  if (!isAnswer(bus.call(ping, QDBus::Block, answerPatience))) return std::nullopt;
  const bool shown = namesHost(bus.call(questionForHost(), QDBus::Block, answerPatience));
  return shown ? StatusArea::items : StatusArea::itemsNobodyShows;
}

bool hasTray(x11::Connection& connection) {
  const auto owner = connection.reply(xcb_get_selection_owner_reply,
                                      xcb_get_selection_owner(connection.raw(), traySelection(connection)));
  return owner && (*owner)->owner != XCB_NONE;
}

}  // namespace

QDBusMessage watcherCall(const QString& interface, const char* method, const QVariantList& arguments) {
  QDBusMessage message =
      QDBusMessage::createMethodCall(watcherName, watcherPath, interface, QLatin1String(method));
  message.setArguments(arguments);
  message.setAutoStartService(false);
  return message;
}

QDBusMessage questionForHost() {
  return watcherCall(QStringLiteral("org.freedesktop.DBus.Properties"), "Get",
                     {watcherName, QStringLiteral("IsStatusNotifierHostRegistered")});
}

// Some that show items themselves have no such property.
bool namesHost(const QDBusMessage& answer) {
  return !isAnswer(answer) || answer.arguments().value(0).value<QDBusVariant>().variant().toBool();
}

xcb_atom_t traySelection(x11::Connection& connection) {
  return connection.intern("_NET_SYSTEM_TRAY_S" + std::to_string(connection.screenNumber()));
}

StatusArea findStatusArea(x11::Connection* server) {
  const QString name = QStringLiteral("velicor-status-area");
  const auto area = onTheBus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, name));
  QDBusConnection::disconnectFromBus(name);
  if (area) return *area;
  return server && hasTray(*server) ? StatusArea::windows : StatusArea::none;
}

}  // namespace velicor::tray
