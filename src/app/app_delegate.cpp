#include "app/app_delegate.h"

#include <utility>

#include "app/app_state.h"
#include "loupe/loupe_controller.h"
#include "platform/desktop/desktop.h"

namespace velicor {

AppDelegate::AppDelegate(desktop::Desktop& desktop) : desktop_(desktop) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() { startMainUI(); }

void AppDelegate::applicationWillTerminate() { AppState::shared().saveSettings(); }

void AppDelegate::startMainUI() {
  if (std::exchange(mainUIStarted_, true)) return;
  AppState& state = AppState::shared();
  loupe_ = std::make_shared<LoupeController>(state.processor, desktop_);
  loupe_->onFrameChange = [](const DesktopRect& frame) { AppState::shared().loupeFrameChanged(frame); };
  state.loupe = loupe_;
  state.applyRestoredSettings();

  loupe_->panel().orderFront();
  loupe_->updateMousePassthrough();
  // Starts the capture of the region that the loupe begins with.
  if (loupe_->onFrameChange) loupe_->onFrameChange(loupe_->panel().frame());
}

}  // namespace velicor
