#include "menubar/menu_bar_controller.h"

#include <chrono>
#include <utility>

#include <QCursor>

#include "app/about_panel.h"
#include "app/app_state.h"
#include "controls/popup_menu.h"
#include "loupe/loupe_controller.h"
#include "menubar/hot_key.h"
#include "menubar/mode_titles.h"
#include "menubar/shortcut_recorder.h"
#include "menubar/status_icon.h"
#include "platform/base/product.h"
#include "platform/desktop/activation.h"
#include "platform/desktop/application.h"
#include "platform/desktop/pointer.h"
#include "platform/dispatch/main_queue.h"
#include "platform/tray/status_item.h"
#include "scopes/scopes_panel_controller.h"
#include "update/updates.h"

namespace velicor {

namespace {

using desktop::ActivationPolicy;

constexpr auto dockExitDelay = std::chrono::milliseconds(600);

tray::TemplateIcon statusIcon() {
  return {status_icon::side, [](QPainter& painter) { status_icon::draw(painter, Qt::black); },
          QString::fromUtf8(product::identifier) + QStringLiteral("-symbolic")};
}

QString shortcutText() {
  const HotKey& key = HotKey::shared();
  return QString::fromUtf8(HotKey::displayString(key.keyCode(), key.modifiers()));
}

}  // namespace

// Cancelled by letting it go.
struct MenuBarController::DockExit {};

MenuBarController::MenuBarController(AppState& state, LoupeController& loupe, ScopesPanelController& scopes,
                                     Environment environment)
    : state_(state),
      loupe_(loupe),
      scopes_(scopes),
      environment_(environment),
      statusItem_(std::make_unique<tray::StatusItem>(environment.desktop, environment.clock, QString::fromUtf8(product::name),
                                                     statusIcon())),
      shownMode_(state.mode()),
      life_(std::make_shared<MenuBarController*>(this)) {
  statusItem_->menuWillOpen = [this] { rebuildMenu(); };
  statusItem_->popUp = [this](const desktop::Menu& menu) {
    controls::popUp(environment_.desktop, menu, QCursor::pos());
  };
  rebuildMenu();
  watchState();
  HotKey::shared().onTrigger = [life = std::weak_ptr(life_)] {
    if (const auto self = life.lock()) (*self)->toggle();
  };
  HotKey::shared().registerHotKey();
}

MenuBarController::~MenuBarController() = default;

// A status area may show the menu's last form without asking.
void MenuBarController::watchState() {
  stateChanges_ = state_.willChange.subscribe([this] {
    if (std::exchange(rebuildPending_, true)) return;
    dispatch::MainQueue::shared().async([life = std::weak_ptr(life_)] {
      const auto self = life.lock();
      if (!self) return;
      (*self)->rebuildPending_ = false;
      if ((*self)->shownMode_ != (*self)->state_.mode()) (*self)->rebuildMenu();
    });
  });
  shortcutChanges_ = HotKey::shared().displayChanged.subscribe([this] { rebuildMenu(); });
}

const desktop::Menu& MenuBarController::menu() const { return statusItem_->menu(); }

void MenuBarController::rebuildMenu() {
  shownMode_ = state_.mode();
  const QString name = QString::fromUtf8(product::name);
  desktop::Menu menu{
      {.title = isHidden_ ? "Show " + name : QStringLiteral("Hide to Menu Bar"), .action = [this] { toggle(); }},
      {.title = "Shortcut: " + shortcutText(), .action = [this] { beginShortcutChange(); }},
      {}};
  addModes(menu);
  menu.push_back({});
  if (updates::areIncluded()) menu.push_back({.title = QStringLiteral("Check for Updates…"), .action = updates::checkNow});
  menu.push_back({.title = "About " + name, .action = AboutPanel::show});
  menu.push_back({.title = "Quit " + name, .action = desktop::terminate, .shortcut = QKeySequence(Qt::CTRL | Qt::Key_Q)});
  // An item that is chosen later than the controller goes finds nobody.
  for (desktop::MenuItem& item : menu) {
    if (!item.action) continue;
    item.action = [life = std::weak_ptr(life_), action = std::move(item.action)] {
      if (!life.expired()) action();
    };
  }
  statusItem_->setMenu(std::move(menu));
}

void MenuBarController::addModes(desktop::Menu& menu) {
  for (const MetalProcessor::Mode mode : MetalProcessor::allModes) {
    const int tag = MetalProcessor::id(mode);
    menu.push_back({.title = titleOf(mode),
                    .action = [this, tag] { pickMode(tag); },
                    .enabled = !isHidden_,
                    .checked = mode == shownMode_});
  }
}

void MenuBarController::toggle() { isHidden_ ? show() : hide(); }

void MenuBarController::pickMode(int tag) {
  const auto mode = MetalProcessor::modeFrom(tag);
  if (!mode) return;
  state_.setMode(*mode);
  rebuildMenu();
}

void MenuBarController::hide() {
  if (std::exchange(isHidden_, true)) return;
  panelWasVisible_ = scopes_.panel().isVisible();
  if (state_.processor) state_.processor->reset();
  if (LiveTextureView* preview = loupe_.metalView()) preview->draw();
  loupe_.hidePanelHint();
  loupe_.panel().orderOut();
  scopes_.panel().orderOut();
  environment_.desktop.pointer().setWatching(false);
  state_.capture.stop();
  if (state_.processor) state_.processor->reset();  // a frame may have come in since
  scheduleDockExit();
  rebuildMenu();
}

void MenuBarController::scheduleDockExit() {
  dockExit_ = std::make_shared<DockExit>();
  environment_.clock.callAfter(dockExitDelay, [this, pending = std::weak_ptr(dockExit_)] {
    // It goes with the controller, and with the next one.
    if (pending.expired() || !isHidden_) return;
    desktop::Activation& activation = environment_.desktop.activation();
    if (activation.policy() != ActivationPolicy::accessory) activation.setPolicy(ActivationPolicy::accessory);
  });
}

void MenuBarController::show() {
  if (!std::exchange(isHidden_, false)) return;
  dockExit_.reset();
  desktop::Activation& activation = environment_.desktop.activation();
  if (activation.policy() != ActivationPolicy::regular) activation.setPolicy(ActivationPolicy::regular);
  environment_.desktop.pointer().setWatching(true);
  loupe_.panel().orderFront();
  loupe_.updateMousePassthrough();
  if (loupe_.onFrameChange) loupe_.onFrameChange(loupe_.panel().frame());
  if (panelWasVisible_) scopes_.panel().orderFront();
  loupe_.frameView().panelVisible = panelWasVisible_;
  loupe_.frameView().update();
  // The program becomes the active one where it has a panel with controls on the screen.
  scopes_.panel().makeKey();
  state_.capture.resume();
  rebuildMenu();
}

void MenuBarController::bringForward() {
  if (isHidden_) return show();
  loupe_.panel().orderFront();
  if (scopes_.panel().isVisible()) scopes_.panel().orderFront();
}

void MenuBarController::bringBack() {
  bringForward();
  scopes_.panel().makeKey();
}

void MenuBarController::beginShortcutChange() {
  recorder_ = std::make_unique<ShortcutRecorder>(environment_.desktop, environment_.settings,
                                                 [life = std::weak_ptr(life_)] {
                                                   if (const auto self = life.lock()) (*self)->rebuildMenu();
                                                 });
  recorder_->show();
}

}  // namespace velicor
