#pragma once

#include <functional>
#include <vector>

#include "platform/desktop/menu.h"
#include "platform/tray/bus_object.h"
#include "platform/tray/bus_types.h"

namespace velicor::tray {

// A menu that another program shows for us (com.canonical.dbusmenu, version 3). Main thread.
class MenuExporter : public BusObject {
 public:
  static constexpr const char* path = "/MenuBar";

  explicit MenuExporter(const QDBusConnection& bus);

  // An item of the menu that was replaced does nothing any more, even where somebody still shows it.
  void setMenu(desktop::Menu menu);

  // The menu is about to be shown; the handler may set another one.
  std::function<void()> willOpen;

 protected:
  QVariantMap properties() const override;
  std::optional<QVariantList> call(const QString& method, const QVariantList& arguments) override;

 private:
  // An item by its number; its children are numbered after it.
  struct Entry {
    const desktop::MenuItem* item = nullptr;
    std::vector<int> children{};
  };

  std::vector<int> number(const desktop::Menu& menu);
  const Entry* find(int id) const;
  MenuNode node(int id, int depth) const;
  static QVariantMap describe(const desktop::MenuItem& item);
  QVariantMap propertiesOf(int id) const;

  QVariantList layout(const QVariantList& arguments) const;
  QVariantList groupProperties(const QVariantList& arguments) const;
  bool happened(int id, const QString& event);
  bool aboutToShow();

  desktop::Menu menu_;
  std::vector<Entry> entries_;
  std::vector<int> top_;
  int firstId_ = 1;  // of entries_; 0 is the menu itself
  uint revision_ = 1;
};

}  // namespace velicor::tray
