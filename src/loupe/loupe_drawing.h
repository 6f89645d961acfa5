#pragma once

#include "platform/base/geometry.h"

class QPainter;

namespace velicor {

// What the loupe frame shows besides its outline.
struct LoupeAppearance {
  FrameRect bounds;  // the size to name in the label
  bool locked = false;
  bool panelVisible = true;
  bool interacting = false;
  bool focused = false;
  friend bool operator==(const LoupeAppearance&, const LoupeAppearance&) = default;
};

// Paints the loupe frame over `area`, which starts at the painter's origin and covers whole device pixels.
// Every straight edge lies on a device pixel.
void drawLoupeFrame(QPainter& painter, const FrameRect& area, const LoupeAppearance& appearance);

}  // namespace velicor
