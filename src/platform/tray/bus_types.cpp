#include "platform/tray/bus_types.h"

#include <QDBusMetaType>

namespace velicor::tray {

void registerBusTypes() {
  qDBusRegisterMetaType<IconPixmap>();
  qDBusRegisterMetaType<QList<IconPixmap>>();
  qDBusRegisterMetaType<ToolTip>();
  qDBusRegisterMetaType<MenuNode>();
  qDBusRegisterMetaType<MenuProperties>();
  qDBusRegisterMetaType<QList<MenuProperties>>();
  qDBusRegisterMetaType<MenuEvent>();
  qDBusRegisterMetaType<QList<MenuEvent>>();
  qDBusRegisterMetaType<MenuShortcut>();
}

QDBusArgument& operator<<(QDBusArgument& argument, const IconPixmap& value) {
  argument.beginStructure();
  argument << value.width << value.height << value.argb;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, IconPixmap& value) {
  argument.beginStructure();
  argument >> value.width >> value.height >> value.argb;
  argument.endStructure();
  return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const ToolTip& value) {
  argument.beginStructure();
  argument << value.iconName << value.icon << value.title << value.text;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, ToolTip& value) {
  argument.beginStructure();
  argument >> value.iconName >> value.icon >> value.title >> value.text;
  argument.endStructure();
  return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuNode& value) {
  argument.beginStructure();
  argument << value.id << value.properties;
  argument.beginArray(QMetaType::fromType<QDBusVariant>());
  for (const MenuNode& child : value.children) argument << QDBusVariant(QVariant::fromValue(child));
  argument.endArray();
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuNode& value) {
  argument.beginStructure();
  argument >> value.id >> value.properties;
  value.children.clear();
  argument.beginArray();
  while (!argument.atEnd()) {
    QDBusVariant child;
    argument >> child;
    value.children.push_back(qdbus_cast<MenuNode>(child.variant()));
  }
  argument.endArray();
  argument.endStructure();
  return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuProperties& value) {
  argument.beginStructure();
  argument << value.id << value.properties;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuProperties& value) {
  argument.beginStructure();
  argument >> value.id >> value.properties;
  argument.endStructure();
  return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& value) {
  argument.beginStructure();
  argument << value.id << value.name << value.data << value.time;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& value) {
  argument.beginStructure();
  argument >> value.id >> value.name >> value.data >> value.time;
  argument.endStructure();
  return argument;
}

}  // namespace velicor::tray
