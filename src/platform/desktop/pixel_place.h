#pragma once

#include <QRectF>

#include "platform/base/geometry.h"

class QWidget;

namespace velicor::desktop {

// The device pixels that a widget covers: exact where it fills a panel, else with each edge at the nearest
// one. At scales with a fraction the size depends on the place.
struct PixelPlace {
  DeviceRect inWindow;
  QRectF inWidget;  // the same in points of the widget, for painting
};

PixelPlace pixelPlaceOf(const QWidget& widget);

}  // namespace velicor::desktop
