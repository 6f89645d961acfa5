#include "platform/desktop/pixel_place.h"

#include <QWidget>

#include "platform/desktop/panel.h"

namespace velicor::desktop {

namespace {

DeviceRect pixelsOf(const QWidget& widget, QPointF corner) {
  const Panel* panel = Panel::of(&widget);
  if (panel && widget.size() == widget.window()->size()) {
    return {0, 0, panel->deviceFrame().width, panel->deviceFrame().height};
  }
  const double scale = widget.devicePixelRatioF();
  const int left = roundHalfAway(corner.x() * scale);
  const int top = roundHalfAway(corner.y() * scale);
  return {left, top, roundHalfAway((corner.x() + widget.width()) * scale) - left,
          roundHalfAway((corner.y() + widget.height()) * scale) - top};
}

}  // namespace

PixelPlace pixelPlaceOf(const QWidget& widget) {
  const QPointF corner = widget.mapTo(widget.window(), QPointF(0, 0));
  const DeviceRect pixels = pixelsOf(widget, corner);
  const double scale = widget.devicePixelRatioF();
  return {pixels,
          {QPointF(pixels.x, pixels.y) / scale - corner, QSizeF(pixels.width, pixels.height) / scale}};
}

}  // namespace velicor::desktop
