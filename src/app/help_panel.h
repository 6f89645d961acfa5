#pragma once

#include <memory>

#include "controls/utility_panel.h"

namespace velicor {

// The keys and what the mouse does, as gestures.h has them, with the global shortcut as it is now. Main thread.
class HelpPanel {
 public:
  // Not shown. The desktop outlives it.
  explicit HelpPanel(desktop::Desktop& desktop);

  // Brings it to the front with the keyboard: in the middle of the main screen when it was not there yet.
  void show();

 private:
  class Content;
  std::unique_ptr<controls::UtilityPanel> make();

  desktop::Desktop& desktop_;
  std::unique_ptr<controls::UtilityPanel> panel_;
};

}  // namespace velicor
