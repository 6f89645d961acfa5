#pragma once

#include "loupe/loupe_geometry.h"
#include "platform/desktop/panel.h"

namespace velicor {

// The loupe's window: takes the keyboard although it is borderless, and never gets smaller than 60 by 60
// points.
class KeyablePanel : public desktop::Panel {
 public:
  using desktop::Panel::Panel;
  bool canBecomeKey() const override { return true; }
  void setFrame(DesktopRect frame) override {
    desktop::Panel::setFrame(loupe_geometry::keepingMinimum(frame, this->frame()));
  }
};

}  // namespace velicor
