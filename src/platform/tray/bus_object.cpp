#include "platform/tray/bus_object.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVariant>

namespace velicor::tray {

namespace {

const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

}  // namespace

BusObject::BusObject(const QDBusConnection& bus, const char* path, const char* interface, const char* methods)
    : bus_(bus), path_(QLatin1String(path)), interface_(QLatin1String(interface)), methods_(methods) {
  bus_.registerVirtualObject(path_, this);
}

BusObject::~BusObject() { bus_.unregisterObject(path_); }

QString BusObject::introspect(const QString& path) const {
  return path == path_ ? QStringLiteral("<interface name=\"%1\">%2</interface>").arg(interface_, QLatin1String(methods_))
                       : QString();
}

bool BusObject::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
  if (message.interface() == propertiesInterface) {
    answerAboutProperties(message, connection);
    return true;
  }
  if (!message.interface().isEmpty() && message.interface() != interface_) return false;
  const auto answer = call(message.member(), message.arguments());
  if (!answer) return false;
  if (message.isReplyRequired()) connection.send(message.createReply(*answer));
  return true;
}

void BusObject::answerAboutProperties(const QDBusMessage& message, const QDBusConnection& connection) const {
  const QVariantList arguments = message.arguments();
  const QVariantMap all = properties();
  if (message.member() == QLatin1String("GetAll")) {
    connection.send(message.createReply(QVariant(all)));
    return;
  }
  const auto found = all.find(arguments.value(1).toString());
  if (message.member() == QLatin1String("Get") && found != all.end()) {
    connection.send(message.createReply(QVariant::fromValue(QDBusVariant(*found))));
    return;
  }
  connection.send(message.createErrorReply(QDBusError::InvalidArgs, QStringLiteral("no such property to be read or set")));
}

void BusObject::emitSignal(const char* name, const QVariantList& arguments) {
  QDBusMessage signal = QDBusMessage::createSignal(path_, interface_, QLatin1String(name));
  signal.setArguments(arguments);
  bus_.send(signal);
}

}  // namespace velicor::tray
