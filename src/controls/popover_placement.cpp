#include "controls/popover_placement.h"

#include <algorithm>

namespace velicor::controls {

namespace {

// The nearest place at which the length lies within low…high; at the low end where it is too long.
int held(int place, int length, int low, int high) { return std::max(low, std::min(place, high - length)); }

}  // namespace

PopoverPlacement placePopover(const DeviceRect& anchor, int width, int height, const DeviceRect& screen,
                              int shoulder) {
  const bool fitsBelow = anchor.bottom() + height <= screen.bottom();
  const bool fitsAbove = anchor.y - height >= screen.y;
  PopoverPlacement placement;
  placement.below = fitsBelow || !fitsAbove;
  const int centre = anchor.x + anchor.width / 2;
  const int x = held(centre - width / 2, width, screen.x, screen.right());
  const int y = held(placement.below ? anchor.bottom() : anchor.y - height, height, screen.y, screen.bottom());
  placement.window = {x, y, width, height};
  placement.tip = std::clamp(centre - x, shoulder, std::max(shoulder, width - shoulder));
  return placement;
}

}  // namespace velicor::controls
