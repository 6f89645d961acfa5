#pragma once

namespace velicor {

namespace controls {
class UtilityPanel;
}
namespace desktop {
class Desktop;
}

// The panel that says what the program is, which version runs, and what it does. Main thread.
class AboutPanel {
 public:
  // Makes the panel available while it lives, and takes it away with itself: kept by main(). The desktop
  // outlives it.
  class Installation {
   public:
    explicit Installation(desktop::Desktop& desktop);
    ~Installation();
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;
  };

  // Brings it to the front with the keyboard, whichever program is active: in the middle of the main screen
  // when it was not there yet. Nothing without an installation.
  static void show();

  // None before the first show().
  static controls::UtilityPanel* panel();
};

}  // namespace velicor
