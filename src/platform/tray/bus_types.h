#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

// What the status item and its menu send over the message bus, in the shapes that the two protocols want.
namespace velicor::tray {

// (iiay): rows of pixels from the top, each four bytes: alpha, red, green, blue.
struct IconPixmap {
  int width = 0;
  int height = 0;
  QByteArray argb;
};

// (sa(iiay)ss)
struct ToolTip {
  QString iconName;
  QList<IconPixmap> icon;
  QString title;
  QString text;
};

// (ia{sv}av), the children being of the same kind.
struct MenuNode {
  int id = 0;
  QVariantMap properties;
  QList<MenuNode> children;
};

// (ia{sv})
struct MenuProperties {
  int id = 0;
  QVariantMap properties;
};

// (isvu)
struct MenuEvent {
  int id = 0;
  QString name;
  QDBusVariant data;
  uint time = 0;
};

// aas: keys that are pressed together, one list for each step.
using MenuShortcut = QList<QStringList>;

// Makes them known to the bus library; may be called again.
void registerBusTypes();

QDBusArgument& operator<<(QDBusArgument& argument, const IconPixmap& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, IconPixmap& value);
QDBusArgument& operator<<(QDBusArgument& argument, const ToolTip& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, ToolTip& value);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuNode& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuNode& value);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuProperties& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuProperties& value);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& value);

}  // namespace velicor::tray

Q_DECLARE_METATYPE(velicor::tray::IconPixmap)
Q_DECLARE_METATYPE(velicor::tray::ToolTip)
Q_DECLARE_METATYPE(velicor::tray::MenuNode)
Q_DECLARE_METATYPE(velicor::tray::MenuProperties)
Q_DECLARE_METATYPE(velicor::tray::MenuEvent)
