#include "app/command_menus.h"

#include <algorithm>
#include <utility>

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>

#include "app/about_panel.h"
#include "app/app_delegate.h"
#include "app/app_state.h"
#include "app/support_mail.h"
#include "controls/plain_button.h"
#include "loupe/loupe_controller.h"
#include "menubar/hot_key.h"
#include "menubar/menu_bar_controller.h"
#include "menubar/mode_titles.h"
#include "platform/base/product.h"
#include "platform/desktop/application.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/opener.h"
#include "platform/log/log.h"
#include "scopes/panel_title_strip.h"
#include "scopes/scopes_panel_controller.h"
#include "update/updates.h"

namespace velicor {

namespace {

using desktop::Menu;
using desktop::MenuItem;
using MenuBarAction = void (MenuBarController::*)();

const QString productName = QString::fromStdString(std::string(product::name));

MenuItem heading(const QString& title) { return {.title = title, .enabled = false}; }

// Does nothing while there is no controller.
std::function<void()> byMenuBar(MenuBarAction action) {
  return [action] {
    if (const auto present = AppDelegate::menuBar.lock()) ((*present).*action)();
  };
}

void openWebsite() {
  const Status opened = desktop::systemOpener().openUrl("https://" + std::string(product::siteHost) + "/");
  if (!opened) log::general("no browser took the product's site: " + opened.error().description);
}

void addModes(Menu& menu) {
  for (const MetalProcessor::Mode mode : MetalProcessor::allModes) {
    const int digit = MetalProcessor::id(mode) + 1;
    menu.push_back({.title = titleOf(mode),
                    .action = [mode] { AppState::shared().setMode(mode); },
                    .checked = AppState::shared().mode() == mode,
                    .shortcut = QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_0 + digit))});
  }
}

MenuItem lockItem() {
  return {.title = AppState::shared().locked() ? QStringLiteral("Unlock Loupe") : QStringLiteral("Lock Loupe"),
          .action = [] { AppState::shared().setLocked(!AppState::shared().locked()); },
          .shortcut = QKeySequence(Qt::CTRL | Qt::Key_L)};
}

QString hideTitle() {
  const HotKey& key = HotKey::shared();
  const std::string shortcut = HotKey::displayString(key.keyCode(), key.modifiers());
  return QStringLiteral("Hide to Menu Bar  (%1)").arg(QString::fromStdString(shortcut));
}

Menu helpMenu() {
  return {{.title = productName + " Help", .action = AboutPanel::show},
          {},
          {.title = QStringLiteral("Email Support…"), .action = [] { SupportMail::compose(); }},
          {.title = productName + " Website", .action = openWebsite}};
}

}  // namespace

Menu CommandMenus::commands() {
  Menu menu{heading(QStringLiteral("Analysis"))};
  addModes(menu);
  menu.insert(menu.end(), {{},
                           lockItem(),
                           {},
                           {.title = hideTitle(), .action = byMenuBar(&MenuBarController::hide)},
                           {.title = QStringLiteral("Change Shortcut…"),
                            .action = byMenuBar(&MenuBarController::beginShortcutChange)},
                           {},
                           {.title = "About " + productName, .action = AboutPanel::show}});
  if (updates::areIncluded()) menu.push_back({.title = QStringLiteral("Check for Updates…"), .action = updates::checkNow});
  menu.push_back({.title = QStringLiteral("Help"), .submenu = helpMenu()});
  menu.push_back({});
  menu.push_back({.title = "Quit " + productName,
                  .action = desktop::terminate,
                  .shortcut = QKeySequence(Qt::CTRL | Qt::Key_Q)});
  return menu;
}

CommandMenus::CommandMenus(desktop::Desktop& desktop, LoupeController& loupe, ScopesPanelController& scopes)
    : desktop_(desktop), loupe_(loupe), scopes_(scopes), help_(desktop) {
  makeKeys();
  scopes_.setMenu([this](QPoint corner) { open(corner, controls::MenuCorner::topRight); });
  qApp->installEventFilter(this);
}

// What a key does is looked up when it is pressed.
void CommandMenus::makeKeys() {
  for (const MenuItem& item : commands()) {
    if (item.shortcut.isEmpty()) continue;
    addKey(item.shortcut, [keys = item.shortcut] {
      const Menu present = commands();
      const auto found = std::ranges::find(present, keys, &MenuItem::shortcut);
      if (found != present.end()) found->action();
    });
  }
  addKey(QKeySequence(Qt::Key_F1), [this] { help_.show(); });
  addKey(QKeySequence(Qt::Key_F6), [this] { changePanel(); });
  addKey(QKeySequence(Qt::Key_F10), [this] { openByKey(); });
}

void CommandMenus::addKey(const QKeySequence& keys, std::function<void()> action) {
  auto key = std::make_unique<QAction>();
  key->setShortcut(keys);
  connect(key.get(), &QAction::triggered, this, std::move(action));
  for (QWidget* const window : {&loupe_.panel().window(), &scopes_.panel().window()}) window->addAction(key.get());
  keys_.push_back(std::move(key));
}

bool CommandMenus::eventFilter(QObject* watched, QEvent* event) {
  const bool isWindow = watched->isWidgetType() && static_cast<QWidget*>(watched)->isWindow();
  if (!isWindow) return QObject::eventFilter(watched, event);
  auto& window = static_cast<QWidget&>(*watched);
  if (event->type() == QEvent::Show && window.windowType() != Qt::Popup && window.windowType() != Qt::ToolTip) {
    for (const auto& key : keys_) window.addAction(key.get());
  }
  const bool isPanel = &window == &loupe_.panel().window() || &window == &scopes_.panel().window();
  if (event->type() == QEvent::ContextMenu && isPanel) {
    open(static_cast<QContextMenuEvent*>(event)->globalPos(), controls::MenuCorner::topLeft);
    return true;
  }
  return QObject::eventFilter(watched, event);
}

// Below the menu button in the panel that has one, else beside the window that has the keyboard.
void CommandMenus::openByKey() {
  const QWidget* const active = QApplication::activeWindow();
  if (!active) return;
  const QWidget& button = scopes_.titleStrip().menuButton();
  const bool hasButton = active == &scopes_.panel().window();
  QMenu* const menu =
      hasButton ? open(button.mapToGlobal(QPoint(button.width(), button.height())), controls::MenuCorner::topRight)
                : open(active->mapToGlobal(QPoint(active->width(), 0)), controls::MenuCorner::topLeft);
  const QList<QAction*> actions = menu->actions();
  const auto first = std::ranges::find_if(
      actions, [](const QAction* action) { return action->isEnabled() && !action->isSeparator(); });
  if (first != actions.end()) menu->setActiveAction(*first);
}

// From the loupe to the scopes panel, or to whoever had the keyboard where that is not there; from elsewhere to the loupe.
void CommandMenus::changePanel() {
  if (!loupe_.panel().isKey()) return loupe_.takeKeyboard();
  loupe_.leaveKeyboard();
  scopes_.panel().makeKey();
}

QMenu* CommandMenus::open(QPoint place, controls::MenuCorner corner) const {
  return controls::popUp(desktop_, commands(), place, corner);
}

}  // namespace velicor
