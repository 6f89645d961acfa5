#include "controls/popup_menu.h"

#include <QAction>
#include <QMenu>

#include "controls/menu_style.h"
#include "platform/desktop/compositor.h"
#include "platform/desktop/desktop.h"
#include "platform/dispatch/main_queue.h"

namespace velicor::controls {

namespace {

void dress(QMenu& menu, bool hasAlpha) {
  menu.setWindowFlag(Qt::FramelessWindowHint);
  menu.setWindowFlag(Qt::NoDropShadowWindowHint);
  menu.setAttribute(Qt::WA_TranslucentBackground, hasAlpha);
  menu.setStyle(MenuStyle::shared());
  menu.setFont(MenuStyle::font());
}

QString withoutMnemonics(QString title) { return title.replace(QLatin1Char('&'), QLatin1String("&&")); }

void fill(QMenu& menu, const desktop::Menu& items, bool hasAlpha);

void addItem(QMenu& menu, const desktop::MenuItem& item, bool hasAlpha) {
  if (item.isSeparator()) {
    menu.addSeparator();
    return;
  }
  if (!item.submenu.empty()) {
    QMenu* const submenu = menu.addMenu(withoutMnemonics(item.title));
    dress(*submenu, hasAlpha);
    fill(*submenu, item.submenu, hasAlpha);
    return;
  }
  if (item.isHeading()) {
    menu.addSection(item.title);
    return;
  }
  QAction* const action = menu.addAction(withoutMnemonics(item.title));
  action->setEnabled(item.enabled);
  action->setCheckable(item.checked.has_value());
  action->setChecked(item.checked.value_or(false));
  action->setShortcut(item.shortcut);
  action->setShortcutContext(Qt::WidgetShortcut);  // shown only: the windows have the keys
  QObject::connect(action, &QAction::triggered, action, [chosen = item.action] {
    if (chosen) dispatch::MainQueue::shared().async(chosen);
  });
}

void fill(QMenu& menu, const desktop::Menu& items, bool hasAlpha) {
  for (const desktop::MenuItem& item : items) addItem(menu, item, hasAlpha);
}

}  // namespace

QMenu* popUp(desktop::Desktop& desktop, const desktop::Menu& menu, QPoint place, MenuCorner corner) {
  auto* popup = new QMenu;
  popup->setAttribute(Qt::WA_DeleteOnClose);
  const bool hasAlpha = desktop.compositor().isPresent();
  dress(*popup, hasAlpha);
  fill(*popup, menu, hasAlpha);
  if (corner == MenuCorner::topRight) place.rx() -= popup->sizeHint().width();
  popup->popup(place);
  return popup;
}

}  // namespace velicor::controls
