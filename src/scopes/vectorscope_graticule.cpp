#include "scopes/vectorscope_graticule.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <QPainter>
#include <QPainterPath>

#include "analysis/kernels/color_constants.h"
#include "platform/desktop/look.h"

namespace velicor {

namespace {

constexpr double gridOpacity = 0.25;
constexpr double gridWidth = 0.5;
constexpr std::array rings{0.25, 0.5, 0.75, 1.0};  // of the radius
constexpr double skinLineOpacity = 0.7;
constexpr double skinLineWidth = 1;
constexpr double boxSide = 10;
constexpr double boxWidth = 1;
constexpr QPointF labelOffset(10, -8);  // from a box's centre to its label's

struct Source {
  const char* label;
  double r;
  double g;
  double b;
};

constexpr std::array<Source, 6> sources{{{"R", 0.75, 0, 0},
                                         {"G", 0, 0.75, 0},
                                         {"B", 0, 0, 0.75},
                                         {"Cy", 0, 0.75, 0.75},
                                         {"Mg", 0.75, 0, 0.75},
                                         {"Yl", 0.75, 0.75, 0}}};

VectorscopeGraticule::Target targetOf(const Source& source) {
  const double y = color::lumaRed * source.r + color::lumaGreen * source.g + color::lumaBlue * source.b;
  return {source.label, (source.b - y) / color::cbDivisor, (source.r - y) / color::crDivisor};
}

// The parts of the graticule in one canvas.
struct Plane {
  QPainter& painter;
  double w = 0;
  double h = 0;
  double cx = w * 0.5;
  double cy = h * 0.5;
  QColor grid = look::faded(Qt::white, gridOpacity);

  void drawRings() const {
    const double radius = std::min(w, h) * 0.5;
    painter.setPen(QPen(grid, gridWidth));
    for (const double ring : rings) {
      const double r = radius * ring;
      painter.drawEllipse(QRectF(cx - r, cy - r, 2 * r, 2 * r));
    }
  }

  void drawCrosshair() const {
    const double x = graticule::onPixels(painter, cx, gridWidth, w);
    const double y = graticule::onPixels(painter, cy, gridWidth, h);
    painter.setPen(QPen(grid, gridWidth, Qt::SolidLine, Qt::FlatCap));
    // One path: the lines don't blend twice where they cross.
    QPainterPath cross(QPointF(0, y));
    cross.lineTo(w, y);
    cross.moveTo(x, 0);
    cross.lineTo(x, h);
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(cross);
  }

  void drawSkinLine() const {
    const double angle = color::skinLineDegrees * std::numbers::pi / 180;
    const QPointF end(cx + w * std::cos(angle) * 0.5, cy - h * std::sin(angle) * 0.5);
    painter.setPen(
        QPen(look::faded(look::systemYellow, skinLineOpacity), skinLineWidth, Qt::SolidLine, Qt::FlatCap));
    painter.drawLine(QPointF(cx, cy), end);
  }

  void drawTarget(const VectorscopeGraticule::Target& target) const {
    const QPointF p(cx + w * target.cb, cy - h * target.cr);
    const QPointF corner(graticule::onPixels(painter, p.x() - boxSide / 2, boxWidth, w),
                         graticule::onPixels(painter, p.y() - boxSide / 2, boxWidth, h));
    painter.setPen(QPen(grid, boxWidth, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    painter.drawRect(QRectF(corner, QSizeF(boxSide, boxSide)));
    graticule::drawLabel(painter, p + labelOffset, QString::fromLatin1(target.label));
  }
};

}  // namespace

const std::array<VectorscopeGraticule::Target, 6>& VectorscopeGraticule::targets() {
  static const std::array<Target, 6> list = [] {
    std::array<Target, 6> made{};
    std::ranges::transform(sources, made.begin(), targetOf);
    return made;
  }();
  return list;
}

void VectorscopeGraticule::draw(QPainter& painter, QSizeF canvas) const {
  const Plane plane{painter, canvas.width(), canvas.height()};
  painter.setBrush(Qt::NoBrush);
  plane.drawRings();
  plane.drawCrosshair();
  plane.drawSkinLine();
  for (const Target& target : targets())
    plane.drawTarget(target);
}

}  // namespace velicor
