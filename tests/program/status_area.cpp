#include "program/status_area.h"

#include <QDBusMessage>
#include <QFile>

#include "support/main_loop.h"

namespace velicor::test {

namespace {

const QString connectionName = "panel";
const QString watcher = "org.kde.StatusNotifierWatcher";
const QString menuInterface = "com.canonical.dbusmenu";

}  // namespace

SessionBus::SessionBus() {
  tray::registerBusTypes();
  waitUntil([this] { return QFile::exists(folder_.filePath("bus")); });
}

SessionBus::~SessionBus() { QDBusConnection::disconnectFromBus(connectionName); }

QDBusConnection SessionBus::connection() const {
  return QDBusConnection::connectToBus(QString::fromStdString(address_), connectionName);
}

StatusArea::StatusArea(const QDBusConnection& bus)
    : BusObject(bus, "/StatusNotifierWatcher", "org.kde.StatusNotifierWatcher", ""), bus_(bus) {
  bus_.registerService(watcher);
}

StatusArea::~StatusArea() { bus_.unregisterService(watcher); }

bool StatusArea::hasItem() const {
  return waitUntil([this] { return !item_.isEmpty(); });
}

QVariantList StatusArea::ask(const QString& path, const QString& interface, const QString& method,
                             const QVariantList& arguments) {
  QDBusMessage message = QDBusMessage::createMethodCall(item_, path, interface, method);
  message.setArguments(arguments);
  return bus_.call(message).arguments();
}

QVariant StatusArea::property(const QString& which) {
  return ask("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
             {"org.kde.StatusNotifierItem", which})
      .value(0)
      .value<QDBusVariant>()
      .variant();
}

QList<tray::MenuNode> StatusArea::menu() {
  ask("/MenuBar", menuInterface, "AboutToShow", {0});
  const QVariantList layout = ask("/MenuBar", menuInterface, "GetLayout", {0, -1, QStringList()});
  return qdbus_cast<tray::MenuNode>(layout.value(1)).children;
}

void StatusArea::choose(int id) {
  ask("/MenuBar", menuInterface, "Event", {id, "clicked", QVariant::fromValue(QDBusVariant(0)), 0U});
}

QVariantMap StatusArea::properties() const { return {{"IsStatusNotifierHostRegistered", true}}; }

std::optional<QVariantList> StatusArea::call(const QString& method, const QVariantList& arguments) {
  if (method == "RegisterStatusNotifierItem") item_ = arguments.value(0).toString();
  return QVariantList();
}

}  // namespace velicor::test
