#pragma once

#include <QPainterPath>
#include <QRectF>

namespace velicor::desktop {

// A rectangle whose corners are parts of a superellipse, so that the curvature has no step where they meet the
// sides. On the diagonals it touches the circular corners of that radius; the radius is at most half the
// shorter side.
QPainterPath continuousCorners(const QRectF& rect, double radius);

}  // namespace velicor::desktop
