#pragma once

#include <memory>
#include <vector>

#include <QAction>
#include <QObject>
#include <QPoint>

#include "app/help_panel.h"
#include "controls/popup_menu.h"
#include "platform/desktop/menu.h"

namespace velicor {

class LoupeController;
class ScopesPanelController;

// The program's commands: in a menu that opens from the scopes panel's menu button, by F10, and by a right click on
// either panel, and by their shortcuts in every window of ours. F1 and F6, which are in no menu, are among these. Main
// thread.
class CommandMenus : public QObject {
 public:
  // All three outlive it.
  CommandMenus(desktop::Desktop& desktop, LoupeController& loupe, ScopesPanelController& scopes);

  // The menu as it is now.
  static desktop::Menu commands();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void makeKeys();
  void addKey(const QKeySequence& keys, std::function<void()> action);
  void openByKey();
  void changePanel();
  QMenu* open(QPoint place, controls::MenuCorner corner) const;

  desktop::Desktop& desktop_;
  LoupeController& loupe_;
  ScopesPanelController& scopes_;
  HelpPanel help_;
  std::vector<std::unique_ptr<QAction>> keys_;
};

}  // namespace velicor
