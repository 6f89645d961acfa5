#include "platform/desktop/continuous_corners.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <QPolygonF>

namespace velicor::desktop {

namespace {

// How far along the sides a corner reaches, in radii.
constexpr double reach = 1.3;
constexpr int steps = 12;

// One quarter of the superellipse |x|ⁿ + |y|ⁿ = extentⁿ, from (0, extent) to (extent, 0).
struct Quarter {
  Quarter(double radius, double longestExtent) : extent(std::min(reach * radius, longestExtent)) {
    const double diagonal = 1 - radius * (1 - std::numbers::sqrt2 / 2) / extent;
    power = -2 * std::log(diagonal) / std::numbers::ln2;  // 2 / n
  }

  QPointF at(int step) const {
    const double angle = std::numbers::pi / 2 * step / steps;
    return {extent * std::pow(std::sin(angle), power), extent * std::pow(std::abs(std::cos(angle)), power)};
  }

  double extent;
  double power = 1;
};

}  // namespace

QPainterPath continuousCorners(const QRectF& rect, double radius) {
  QPainterPath path;
  const double longest = std::min(rect.width(), rect.height()) / 2;
  const double used = std::min(radius, longest);
  if (used <= 0) {
    path.addRect(rect);
    return path;
  }
  const Quarter quarter(used, longest);
  const QRectF centres = rect.adjusted(quarter.extent, quarter.extent, -quarter.extent, -quarter.extent);
  QPolygonF outline;
  for (int step = 0; step <= steps; ++step) {  // clockwise from the top
    const QPointF p = quarter.at(step);
    outline << QPointF(centres.right() + p.x(), centres.top() - p.y());
  }
  for (int step = steps; step >= 0; --step) {
    const QPointF p = quarter.at(step);
    outline << QPointF(centres.right() + p.x(), centres.bottom() + p.y());
  }
  for (int step = 0; step <= steps; ++step) {
    const QPointF p = quarter.at(step);
    outline << QPointF(centres.left() - p.x(), centres.bottom() + p.y());
  }
  for (int step = steps; step >= 0; --step) {
    const QPointF p = quarter.at(step);
    outline << QPointF(centres.left() - p.x(), centres.top() - p.y());
  }
  path.addPolygon(outline);
  path.closeSubpath();
  return path;
}

}  // namespace velicor::desktop
