#pragma once

#include "platform/base/geometry.h"

namespace velicor::controls {

// Where a popover's window goes, in device pixels of the root window.
struct PopoverPlacement {
  DeviceRect window;
  int tip = 0;         // of the arrow, from the window's left edge
  bool below = true;   // the popover is below its anchor, its arrow on its top edge; else the other way round
  friend bool operator==(const PopoverPlacement&, const PopoverPlacement&) = default;
};

// A window of that size (its arrow included) under the middle of the anchor's bottom edge; above the anchor
// where only there is room; pushed onto the screen where neither is. The arrow keeps `shoulder` away from the
// window's sides.
PopoverPlacement placePopover(const DeviceRect& anchor, int width, int height, const DeviceRect& screen,
                              int shoulder);

}  // namespace velicor::controls
