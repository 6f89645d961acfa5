#pragma once

#include <string>

#include <QDBusConnection>
#include <QTemporaryDir>

#include "platform/tray/bus_object.h"
#include "platform/tray/bus_types.h"
#include "support/x_server.h"

namespace velicor::test {

// A message bus of its own, on which we are a desktop's panel.
class SessionBus {
 public:
  SessionBus();
  ~SessionBus();

  // What a program must have in its environment to be on it.
  std::string environment() const { return "DBUS_SESSION_BUS_ADDRESS=" + address_; }
  QDBusConnection connection() const;

 private:
  QTemporaryDir folder_;
  const std::string address_ = "unix:path=" + folder_.filePath("bus").toStdString();
  // The services that it starts keep to that folder too.
  Program program_{{"env", "XDG_RUNTIME_DIR=" + folder_.path().toStdString(), "dbus-daemon", "--session", "--nofork",
                    "--address=" + address_}};
};

// What a desktop's panel does for status items.
class StatusArea : public tray::BusObject {
 public:
  explicit StatusArea(const QDBusConnection& bus);
  ~StatusArea() override;

  // Whether an item comes.
  bool hasItem() const;

  QVariant property(const QString& which);
  QList<tray::MenuNode> menu();
  void choose(int id);

 protected:
  QVariantMap properties() const override;
  std::optional<QVariantList> call(const QString& method, const QVariantList& arguments) override;

 private:
  QVariantList ask(const QString& path, const QString& interface, const QString& method,
                   const QVariantList& arguments);

  QDBusConnection bus_;
  QString item_;
};

}  // namespace velicor::test
