#include "platform/desktop/cursor.h"

namespace velicor::desktop {

QCursor toolkitCursor(Cursor cursor) {
  switch (cursor) {
    case Cursor::openHand:
      return Qt::OpenHandCursor;
    case Cursor::pointingHand:
      return Qt::PointingHandCursor;
    case Cursor::resizeLeftRight:
      return Qt::SizeHorCursor;
    case Cursor::resizeUpDown:
      return Qt::SizeVerCursor;
    // A corner may be dragged both ways, so opposite corners share the cursor with two heads.
    case Cursor::frameResizeTopLeft:
    case Cursor::frameResizeBottomRight:
      return Qt::SizeFDiagCursor;
    case Cursor::frameResizeTopRight:
    case Cursor::frameResizeBottomLeft:
      return Qt::SizeBDiagCursor;
    case Cursor::arrow:
      break;
  }
  return Qt::ArrowCursor;
}

}  // namespace velicor::desktop
