#pragma once

#include <memory>

namespace velicor {

class AppState;
class LoupeController;
class ScopesPanelController;

namespace desktop {
class Desktop;
class WindowObserver;
}

// Creates the main user interface in its fixed order, wires its parts to each other and saves the settings at
// the end. Lives as long as the program runs. Main thread.
class AppDelegate {
 public:
  // The desktop must outlive the delegate, and AppState's environment must be installed for its whole life.
  explicit AppDelegate(desktop::Desktop& desktop);
  ~AppDelegate();
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  void applicationDidFinishLaunching();
  void applicationWillTerminate();

 private:
  void startMainUI();
  void createLoupe(AppState& state);
  void createScopes(AppState& state);
  void showPanels();
  void observeWindows();
  void toggleScopes();

  desktop::Desktop& desktop_;
  std::shared_ptr<LoupeController> loupe_;
  std::unique_ptr<ScopesPanelController> scopes_;
  std::unique_ptr<desktop::WindowObserver> windowObserver_;
  bool mainUIStarted_ = false;
  std::shared_ptr<AppDelegate*> life_;  // what closures held elsewhere find the delegate by
};

}  // namespace velicor
