#pragma once

#include <functional>

#include <QString>

#include "platform/tray/bus_object.h"
#include "platform/tray/icon.h"

namespace velicor::tray {

// The status item as the desktop's panel asks for it (org.kde.StatusNotifierItem): an icon whose click opens
// the menu. Main thread.
class NotifierItem : public BusObject {
 public:
  static constexpr const char* path = "/StatusNotifierItem";

  NotifierItem(const QDBusConnection& bus, const QString& title, const TemplateIcon& icon);

  // A panel that shows no menus for others wants ours opened.
  std::function<void()> activated;

 protected:
  QVariantMap properties() const override;
  std::optional<QVariantList> call(const QString& method, const QVariantList& arguments) override;

 private:
  const QString title_;
  const QString iconName_;
  const QList<IconPixmap> pixmaps_;
};

}  // namespace velicor::tray
