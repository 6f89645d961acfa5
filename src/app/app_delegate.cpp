#include "app/app_delegate.h"

#include <utility>

#include "app/app_state.h"
#include "loupe/loupe_controller.h"
#include "platform/desktop/application.h"
#include "platform/desktop/desktop.h"
#include "scopes/scopes_panel_controller.h"

namespace velicor {

namespace {

constexpr int otherWindowsLevel = 5;  // above the loupe and the scopes panel

}  // namespace

AppDelegate::AppDelegate(desktop::Desktop& desktop)
    : desktop_(desktop), life_(std::make_shared<AppDelegate*>(this)) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() { startMainUI(); }

void AppDelegate::applicationWillTerminate() { AppState::shared().saveSettings(); }

void AppDelegate::startMainUI() {
  if (std::exchange(mainUIStarted_, true)) return;
  AppState& state = AppState::shared();
  createLoupe(state);
  state.applyRestoredSettings();
  createScopes(state);
  showPanels();
  observeWindows();
}

void AppDelegate::createLoupe(AppState& state) {
  loupe_ = std::make_shared<LoupeController>(state.processor, desktop_);
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
}

}  // namespace velicor
