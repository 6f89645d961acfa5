#include "platform/desktop/symbols.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <QPainter>
#include <QPainterPath>
#include <QTransform>

#include "platform/base/geometry.h"

namespace velicor::desktop {

namespace {

constexpr double gridUnits = 16;

// The square in device pixels, and how grid units become whole ones.
struct Canvas {
  QPainter& painter;
  double side;  // of the square
  double weight;

  // A distance from the square's edge.
  int at(double units) const { return roundHalfAway(units * side / gridUnits); }

  // A stroke's width, at least one pixel.
  int stroke() const { return std::max(1, at(weight)); }

  // A width that can be centred in the square without halving a pixel.
  int centred(int width) const {
    const bool sameParity = (roundHalfAway(side) - width) % 2 == 0;
    return sameParity ? width : width + 1;
  }
};

// Two crossed bars with an arrow head at each of the four ends. One path: where parts overlap, a faded symbol
// is no darker than elsewhere.
void drawMoveArrows(const Canvas& canvas) {
  const double centre = canvas.side / 2;
  const double halfBar = canvas.centred(canvas.stroke()) / 2.0;
  const double headLength = canvas.at(3.6);
  const double headHalf = canvas.centred(canvas.at(7.5)) / 2.0;
  const double reach = centre - headLength + 0.5;
  QPainterPath cross;
  cross.setFillRule(Qt::WindingFill);
  cross.addRect(QRectF(centre - halfBar, centre - reach, 2 * halfBar, 2 * reach));
  cross.addRect(QRectF(centre - reach, centre - halfBar, 2 * reach, 2 * halfBar));
  const QPolygonF head({{0, -centre}, {headHalf, headLength - centre}, {-headHalf, headLength - centre}});
  for (int quarter = 0; quarter < 4; ++quarter) {
    const QTransform turn = QTransform::fromTranslate(centre, centre).rotate(90.0 * quarter);
    cross.addPolygon(turn.map(head));
    cross.closeSubpath();
  }
  canvas.painter.drawPath(cross);
}

// A window's outline with its right part filled.
void drawSidebarRight(const Canvas& canvas) {
  // The filled part carries the weight; a full stroke all around would close the rest.
  const double stroke = std::max(1, canvas.at(canvas.weight * 0.7));
  const double top = canvas.at(2);
  const double left = canvas.at(0.3);
  const QRectF outer(QPointF(left, top), QPointF(canvas.side - left, canvas.side - top));
  const QRectF inner = outer.adjusted(stroke, stroke, -stroke, -stroke);
  const double radius = canvas.at(2.4);
  QPainterPath outline;
  outline.addRoundedRect(outer, radius, radius);
  QPainterPath hollow;
  const double innerRadius = std::max(0.0, radius - stroke);
  hollow.addRoundedRect(inner, innerRadius, innerRadius);
  QPainterPath bar;
  bar.addRect(QRectF(QPointF(canvas.at(10), top), outer.bottomRight()));
  canvas.painter.drawPath(outline.subtracted(hollow.subtracted(bar)));
}

// A line through points of the grid as an area, with round ends and corners.
QPainterPath strokedLine(const Canvas& canvas, const QPolygonF& gridPoints, bool closed = false) {
  const double unit = canvas.side / gridUnits;
  QPainterPath line;
  line.addPolygon(QTransform::fromScale(unit, unit).map(gridPoints));
  if (closed) line.closeSubpath();
  QPainterPathStroker stroker;
  stroker.setWidth(canvas.stroke());
  stroker.setCapStyle(Qt::RoundCap);
  stroker.setJoinStyle(Qt::RoundJoin);
  return stroker.createStroke(line).simplified();
}

// A disc with a wavy edge, and a check mark cut out of it.
void drawSealWithCheckMark(const Canvas& canvas) {
  constexpr int waves = 8;
  constexpr int points = 24 * waves;
  const double centre = canvas.side / 2;
  QPolygonF edge;
  for (int i = 0; i < points; ++i) {
    const double angle = 2 * M_PI * i / points;
    const double radius = centre * (0.94 + 0.05 * std::cos(waves * angle));
    edge << QPointF(centre + radius * std::sin(angle), centre - radius * std::cos(angle));
  }
  QPainterPath seal;
  seal.addPolygon(edge);
  seal.closeSubpath();
  canvas.painter.drawPath(seal.subtracted(strokedLine(canvas, QPolygonF({{4.9, 8.3}, {7.2, 10.7}, {11.2, 5.5}}))));
}

// A warning sign: a triangle's outline around an exclamation mark.
void drawWarningTriangle(const Canvas& canvas) {
  const QPainterPath outline = strokedLine(canvas, QPolygonF({{8, 2}, {14.8, 13.7}, {1.2, 13.7}}), true);
  const QPainterPath bar = strokedLine(canvas, QPolygonF({{8, 6.4}, {8, 9}}));
  const QPainterPath dot = strokedLine(canvas, QPolygonF({{8, 11.4}, {8, 11.45}}));
  canvas.painter.drawPath(outline.united(bar).united(dot));
}

struct Symbol {
  std::string_view name;
  void (*draw)(const Canvas&);
};

constexpr std::array symbols{
    Symbol{"arrow.up.and.down.and.arrow.left.and.right", drawMoveArrows},
    Symbol{"checkmark.seal.fill", drawSealWithCheckMark},
    Symbol{"exclamationmark.triangle", drawWarningTriangle},
    Symbol{"sidebar.right", drawSidebarRight},
};

const Symbol* find(std::string_view name) {
  const auto* found = std::ranges::find(symbols, name, &Symbol::name);
  return found == symbols.end() ? nullptr : found;
}

}  // namespace

bool hasSymbol(std::string_view name) { return find(name) != nullptr; }

void drawSymbol(QPainter& painter, std::string_view name, const QRectF& rect, const QColor& color,
                SymbolWeight weight) {
  const Symbol* symbol = find(name);
  if (!symbol) return;
  const double scale = painter.device()->devicePixelRatio();
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(color);
  painter.translate(rect.topLeft());
  painter.scale(1 / scale, 1 / scale);
  const double side = std::min(rect.width(), rect.height()) * scale;
  symbol->draw({painter, side, weight == SymbolWeight::bold ? 2.0 : 1.5});
  painter.restore();
}

}  // namespace velicor::desktop
