#pragma once

#include <memory>

namespace velicor {

class AppState;
class CommandMenus;
class LoupeController;
class MenuBarController;
class ScopesPanelController;

namespace desktop {
class Desktop;
class WindowKeeper;
class WindowObserver;
}
namespace dispatch {
class Clock;
}
namespace settings {
class Settings;
}

// Creates the main user interface in its fixed order, wires its parts to each other and saves the settings at
// the end. Lives as long as the program runs. Main thread.
class AppDelegate {
 public:
  // The references outlive the delegate. What the shared objects and the about panel stand on is installed for its
  // whole life.
  AppDelegate(desktop::Desktop& desktop, settings::Settings& settings, dispatch::Clock& clock);
  ~AppDelegate();
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  void applicationDidFinishLaunching();
  void applicationWillTerminate();

  // How the command menus reach the status menu's controller; empty before the start and after the end.
  static std::weak_ptr<MenuBarController> menuBar;

 private:
  void startMainUI();
  void createLoupe(AppState& state);
  void createScopes(AppState& state);
  void showPanels();
  void createMenuBar(AppState& state);
  void observeWindows();
  void scheduleDeferredStart(AppState& state);
  void toggleScopes();

  desktop::Desktop& desktop_;
  settings::Settings& settings_;
  dispatch::Clock& clock_;
  std::shared_ptr<LoupeController> loupe_;
  std::unique_ptr<ScopesPanelController> scopes_;
  std::shared_ptr<MenuBarController> menuBarController_;
  std::unique_ptr<CommandMenus> commandMenus_;
  std::unique_ptr<desktop::WindowObserver> windowObserver_;
  std::unique_ptr<desktop::WindowKeeper> windowKeeper_;
  bool mainUIStarted_ = false;
  std::shared_ptr<AppDelegate*> life_;  // what closures held elsewhere find the delegate by
};

}  // namespace velicor
