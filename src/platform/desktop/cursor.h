#pragma once

#include <QCursor>

namespace velicor::desktop {

// The mouse cursors that the interface uses.
enum class Cursor {
  arrow,
  openHand,
  pointingHand,
  resizeLeftRight,
  resizeUpDown,
  frameResizeTopLeft,
  frameResizeTopRight,
  frameResizeBottomLeft,
  frameResizeBottomRight
};

// The toolkit's cursor, drawn by the user's cursor theme.
QCursor toolkitCursor(Cursor cursor);

}  // namespace velicor::desktop
