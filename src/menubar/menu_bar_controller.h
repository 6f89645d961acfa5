#pragma once

#include <memory>

#include "analysis/metal_processor.h"
#include "platform/desktop/menu.h"
#include "platform/dispatch/clock.h"
#include "platform/notifications/signal.h"

namespace velicor {

class AppState;
class LoupeController;
class ScopesPanelController;
class ShortcutRecorder;

namespace desktop {
class Desktop;
}
namespace settings {
class Settings;
}
namespace tray {
class StatusItem;
}

// Owns the program's status icon with its menu, and takes the program off the screen and back: both panels, the
// capture, and after a short while its entry among the programs that run. The global shortcut does both. Main
// thread.
class MenuBarController {
 public:
  // What the controller stands on. Outlives it.
  struct Environment {
    desktop::Desktop& desktop;
    settings::Settings& settings;
    dispatch::Clock& clock;
  };

  // Shows the icon and registers HotKey::shared(). The panels are on the screen. All three outlive the
  // controller.
  MenuBarController(AppState& state, LoupeController& loupe, ScopesPanelController& scopes, Environment environment);
  ~MenuBarController();
  MenuBarController(const MenuBarController&) = delete;
  MenuBarController& operator=(const MenuBarController&) = delete;

  bool isHidden() const { return isHidden_; }

  // Whether the scopes panel was on the screen when the program was last hidden.
  bool panelWasVisible() const { return panelWasVisible_; }

  // Nothing where it is so already.
  void hide();
  void show();

  // Whichever of the two changes something.
  void toggle();

  // All of it on the screen and in front, but a scopes panel that the user has hidden. The keyboard stays
  // where it is, unless the program was hidden.
  void bringForward();

  // The same with the keyboard: what another start of the program wants.
  void bringBack();

  // Anew from the state. Whoever opens the menu sees it as it is then.
  void rebuildMenu();
  const desktop::Menu& menu() const;

  // The mode of that number; nothing for other numbers.
  void pickMode(int tag);

  // A new recorder, which takes the place of one that is still open.
  void beginShortcutChange();

 private:
  struct DockExit;

  void watchState();
  void scheduleDockExit();
  void addModes(desktop::Menu& menu);

  AppState& state_;
  LoupeController& loupe_;
  ScopesPanelController& scopes_;
  const Environment environment_;
  bool isHidden_ = false;
  bool panelWasVisible_ = true;
  std::unique_ptr<tray::StatusItem> statusItem_;
  std::unique_ptr<ShortcutRecorder> recorder_;
  std::shared_ptr<DockExit> dockExit_;  // the pending one
  MetalProcessor::Mode shownMode_;
  bool rebuildPending_ = false;
  Subscription stateChanges_;
  Subscription shortcutChanges_;
  std::shared_ptr<MenuBarController*> life_;  // what closures held elsewhere find the object by
};

}  // namespace velicor
