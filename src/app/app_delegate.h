#pragma once

#include <memory>

namespace velicor {

class LoupeController;

namespace desktop {
class Desktop;
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

  desktop::Desktop& desktop_;
  std::shared_ptr<LoupeController> loupe_;
  bool mainUIStarted_ = false;
};

}  // namespace velicor
