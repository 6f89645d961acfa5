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

// The quarter around `centre` from the direction of one edge over to that of the next.
void addQuarter(QPolygonF& outline, const Quarter& quarter, QPointF centre, QPointF from, QPointF to) {
  for (int step = 0; step <= steps; ++step) {
    const QPointF p = quarter.at(step);
    outline << centre + to * p.x() + from * p.y();
  }
}

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
  const QPointF right(1, 0);
  const QPointF down(0, 1);
  QPolygonF outline;
  addQuarter(outline, quarter, centres.topRight(), -down, right);
  addQuarter(outline, quarter, centres.bottomRight(), right, down);
  addQuarter(outline, quarter, centres.bottomLeft(), down, -right);
  addQuarter(outline, quarter, centres.topLeft(), -right, -down);
  path.addPolygon(outline);
  path.closeSubpath();
  return path;
}

}  // namespace velicor::desktop
