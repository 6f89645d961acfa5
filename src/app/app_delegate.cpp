#include "app/app_delegate.h"

#include <chrono>
#include <cstdlib>
#include <utility>

#include "app/app_state.h"
#include "app/command_menus.h"
#include "app/panel_dump.h"
#include "loupe/loupe_controller.h"
#include "menubar/menu_bar_controller.h"
#include "platform/desktop/activation.h"
#include "platform/desktop/application.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/window_keeper.h"
#include "platform/dispatch/clock.h"
#include "scopes/scopes_panel_controller.h"
#include "update/updates.h"

namespace velicor {

namespace {

constexpr int otherWindowsLevel = 5;  // above the loupe and the scopes panel
constexpr auto updateCheckDelay = std::chrono::seconds(2);

}  // namespace

std::weak_ptr<MenuBarController> AppDelegate::menuBar;

AppDelegate::AppDelegate(desktop::Desktop& desktop, settings::Settings& settings, dispatch::Clock& clock)
    : desktop_(desktop), settings_(settings), clock_(clock), life_(std::make_shared<AppDelegate*>(this)) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
  desktop_.activation().setPolicy(desktop::ActivationPolicy::regular);
  startMainUI();
}

void AppDelegate::applicationWillTerminate() { AppState::shared().saveSettings(); }

void AppDelegate::startMainUI() {
  if (std::exchange(mainUIStarted_, true)) return;
  AppState& state = AppState::shared();
  createLoupe(state);
  state.applyRestoredSettings();
  createScopes(state);
  showPanels();
  createMenuBar(state);
  observeWindows();
  scheduleDeferredStart(state);
}

void AppDelegate::createLoupe(AppState& state) {
  loupe_ = std::make_shared<LoupeController>(state.processor, desktop_, clock_);
  loupe_->onFrameChange = [](const DesktopRect& frame) { AppState::shared().loupeFrameChanged(frame); };
  state.loupe = loupe_;
}

void AppDelegate::createScopes(AppState& state) {
  scopes_ = std::make_unique<ScopesPanelController>(state, desktop_);
  const auto toggle = [delegate = std::weak_ptr(life_)] {
    if (const auto present = delegate.lock()) (*present)->toggleScopes();
  };
  loupe_->onPanelToggle = toggle;
  // Hidden by the chip, the panel leaves the user with the mouse on what brings it back; hidden elsewhere, not.
  state.togglePanel = [toggle, delegate = std::weak_ptr(life_)] {
    const auto before = delegate.lock();
    const bool hides = before && (*before)->scopes_->panel().isVisible();
    toggle();
    if (hides) (*before)->loupe_->showPanelHint();
  };
  desktop_.activation().setRepresentative(scopes_->panel().window());
}

void AppDelegate::showPanels() {
  loupe_->panel().orderFront();
  loupe_->updateMousePassthrough();
  // Starts the capture of the region that the loupe begins with.
  if (loupe_->onFrameChange) loupe_->onFrameChange(loupe_->panel().frame());
  scopes_->panel().orderFront();
  // The program becomes the active one: of its two panels this is the one with controls.
  scopes_->panel().makeKey();
}

void AppDelegate::createMenuBar(AppState& state) {
  menuBarController_ = std::make_shared<MenuBarController>(
      state, *loupe_, *scopes_,
      MenuBarController::Environment{.desktop = desktop_, .settings = settings_, .clock = clock_});
  menuBar = menuBarController_;
  commandMenus_ = std::make_unique<CommandMenus>(desktop_, *loupe_, *scopes_);
}

void AppDelegate::scheduleDeferredStart(AppState& state) {
  clock_.callAfter(updateCheckDelay, updates::checkAtLaunch);
  if (std::getenv("VELICOR_DUMP")) startPanelDumps(state, *scopes_, clock_);
}

void AppDelegate::toggleScopes() {
  desktop::Panel& panel = scopes_->panel();
  panel.isVisible() ? panel.orderOut() : panel.orderFront();
  loupe_->frameView().panelVisible = panel.isVisible();
  loupe_->frameView().update();
}

void AppDelegate::observeWindows() {
  windowObserver_ = std::make_unique<desktop::WindowObserver>([this](QWidget& window) {
    const bool isPanel = &window == &loupe_->panel().window() || &window == &scopes_->panel().window();
    if (!isPanel) desktop::setWindowLevel(desktop_, window, otherWindowsLevel);
  });
  windowKeeper_ = std::make_unique<desktop::WindowKeeper>(desktop_);
}

}  // namespace velicor
