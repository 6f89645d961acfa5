#pragma once

#include <memory>

#include <QString>

#include "platform/desktop/panel.h"

namespace velicor::controls {

// A small panel beside the program's two, and above them: its content on the panels' ground, under a strip with its title and
// a close button, by which the mouse also moves it. Closing, by that or by Escape, only orders it out. Main thread.
class UtilityPanel : public desktop::Panel {
 public:
  // Of the content's size, the strip on top of that. Keys go to the content.
  UtilityPanel(desktop::Desktop& desktop, const QString& title, std::unique_ptr<QWidget> content);

  static constexpr int titleHeight = 22;

  bool canBecomeKey() const override { return true; }

  // To the middle of what bars leave of the main screen; nothing without a screen.
  void centre();

  // Shows it and directs the keyboard at it, whichever program is active.
  void makeKeyAndOrderFront();

 private:
  QWidget* const content_;
};

}  // namespace velicor::controls
