#pragma once

#include <optional>

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QVariantList>
#include <QVariantMap>

namespace velicor::tray {

// An object with one interface on the message bus, which other programs call. Main thread.
class BusObject : public QDBusVirtualObject {
 public:
  // There as long as it lives. `methods` is the interface's description in the bus's XML.
  BusObject(const QDBusConnection& bus, const char* path, const char* interface, const char* methods);
  ~BusObject() override;

  QString introspect(const QString& path) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

 protected:
  // All properties that can be read.
  virtual QVariantMap properties() const = 0;

  // The answer to a method; none where there is no such method or the arguments are not its own.
  virtual std::optional<QVariantList> call(const QString& method, const QVariantList& arguments) = 0;

  void emitSignal(const char* name, const QVariantList& arguments = {});

 private:
  void answerAboutProperties(const QDBusMessage& message, const QDBusConnection& connection) const;

  QDBusConnection bus_;
  const QString path_;
  const QString interface_;
  const char* const methods_;
};

}  // namespace velicor::tray
