#pragma once

#include "update/update_checker.h"

class QWidget;

namespace velicor {

// The one window of the update cycle: made when it is first needed, kept when it is closed. Shows
// UpdateChecker::shared(). Main thread.
class UpdateWindow {
 public:
  // Brings the window to the front and directs the keyboard at it, whichever program is active. New: in the
  // middle of the main screen; later: where it was.
  static void show();

  // Nothing where there is no window.
  static void close();

  // None until the first show().
  static QWidget* window();

 private:
  friend class UpdateChecker::Installation;
  static void discard();
};

}  // namespace velicor
