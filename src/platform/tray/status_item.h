#pragma once

#include <functional>
#include <memory>

#include <QString>

#include "platform/desktop/menu.h"
#include "platform/dispatch/clock.h"
#include "platform/tray/icon.h"

namespace velicor::desktop {
class Desktop;
}

namespace velicor::tray {

class LegacyTray;
class StatusNotifier;

// The program's icon in the desktop's status area, with a menu: wherever the desktop has such an area, from
// when on it has one, in its newer or its older form. Says once in the log where there is none some seconds
// after the start. Main thread.
class StatusItem {
 public:
  // The references outlive the item.
  StatusItem(desktop::Desktop& desktop, dispatch::Clock& clock, QString title, TemplateIcon icon);
  ~StatusItem();
  StatusItem(const StatusItem&) = delete;
  StatusItem& operator=(const StatusItem&) = delete;

  void setMenu(desktop::Menu menu);
  const desktop::Menu& menu() const { return menu_; }

  // Called before the menu is shown; may set another one.
  std::function<void()> menuWillOpen;

  // Opens a menu where the mouse is, for status areas that don't do it themselves.
  std::function<void(const desktop::Menu& menu)> popUp;

  bool isShown() const;

 private:
  void followPresence();
  void openMenu();
  void reportAbsence() const;

  desktop::Desktop& desktop_;
  const QString title_;
  const TemplateIcon icon_;
  desktop::Menu menu_;
  std::unique_ptr<StatusNotifier> notifier_;
  std::unique_ptr<LegacyTray> legacy_;
  std::shared_ptr<StatusItem*> life_;  // what scheduled calls find the object by
};

}  // namespace velicor::tray
