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
QPainterPath strokedLine(const Canvas& canvas, const QList<QPointF>& gridPoints, bool closed = false) {
  const double unit = canvas.side / gridUnits;
  QPainterPath line;
  line.addPolygon(QTransform::fromScale(unit, unit).map(QPolygonF(gridPoints)));
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
  canvas.painter.drawPath(seal.subtracted(strokedLine(canvas, {{4.9, 8.3}, {7.2, 10.7}, {11.2, 5.5}})));
}

// A warning sign: a triangle's outline around an exclamation mark.
void drawWarningTriangle(const Canvas& canvas) {
  const QPainterPath outline = strokedLine(canvas, {{8, 2}, {14.8, 13.7}, {1.2, 13.7}}, true);
  const QPainterPath bar = strokedLine(canvas, {{8, 6.4}, {8, 9}});
  const QPainterPath dot = strokedLine(canvas, {{8, 11.4}, {8, 11.45}});
  canvas.painter.drawPath(outline.united(bar).united(dot));
}

// A stroke along the inside of a rectangle or, with the largest radius, an ellipse.
QPainterPath ring(const QRectF& outer, double radius, double stroke) {
  QPainterPath path;
  path.addRoundedRect(outer, radius, radius);
  const double innerRadius = std::max(0.0, radius - stroke);
  QPainterPath inner;
  inner.addRoundedRect(outer.adjusted(stroke, stroke, -stroke, -stroke), innerRadius, innerRadius);
  return path.subtracted(inner);
}

QRectF insetSquare(const Canvas& canvas, double units) {
  const double inset = canvas.at(units);
  return QRectF(0, 0, canvas.side, canvas.side).adjusted(inset, inset, -inset, -inset);
}

QPainterPath disc(QPointF centre, double radius) {
  QPainterPath path;
  path.addEllipse(centre, radius, radius);
  return path;
}

// The four corners of a picture's frame.
void drawViewfinder(const Canvas& canvas) {
  const double gap = canvas.centred(canvas.at(5)) / 2.0;
  const double centre = canvas.side / 2;
  QPainterPath cross;
  cross.setFillRule(Qt::WindingFill);
  cross.addRect(QRectF(centre - gap, 0, 2 * gap, canvas.side));
  cross.addRect(QRectF(0, centre - gap, canvas.side, 2 * gap));
  canvas.painter.drawPath(ring(insetSquare(canvas, 1), canvas.at(3), canvas.stroke()).subtracted(cross));
}

void drawHalfFilledCircle(const Canvas& canvas) {
  const QRectF square = insetSquare(canvas, 1);
  QPainterPath right;
  right.addRect(QRectF(canvas.side / 2, 0, canvas.side / 2, canvas.side));
  QPainterPath left = disc(square.center(), square.width() / 2).subtracted(right);
  canvas.painter.drawPath(left.united(ring(square, square.width() / 2, canvas.stroke())));
}

// A dial whose needle stands at a third of its way.
void drawGauge(const Canvas& canvas) {
  const QRectF square = insetSquare(canvas, 0.6);
  const double unit = canvas.side / gridUnits;
  const QPointF centre = square.center();
  QPainterPath dial = ring(square, square.width() / 2, canvas.stroke());
  for (const double degrees : {-45.0, 45.0, 225.0}) {
    const double angle = degrees * M_PI / 180;
    dial = dial.united(disc(centre + 4.3 * unit * QPointF(std::cos(angle), -std::sin(angle)), 0.9 * unit));
  }
  dial = dial.united(strokedLine(canvas, {{8, 8}, {4.9, 4.9}}));
  canvas.painter.drawPath(dial.united(disc(centre, 1.7 * unit)));
}

// An eye with a line across that keeps its distance.
void drawSlashedEye(const Canvas& canvas) {
  const double unit = canvas.side / gridUnits;
  QPainterPath lids;
  lids.moveTo(0.8, 8);
  lids.cubicTo(4.4, 2.2, 11.6, 2.2, 15.2, 8);
  lids.cubicTo(11.6, 13.8, 4.4, 13.8, 0.8, 8);
  lids.closeSubpath();
  QPainterPathStroker stroker;
  stroker.setWidth(canvas.stroke());
  stroker.setJoinStyle(Qt::RoundJoin);
  const QPainterPath eye = stroker.createStroke(QTransform::fromScale(unit, unit).map(lids)).simplified();
  const QPainterPath pupil = disc(QPointF(8, 8) * unit, 2.3 * unit);
  const QList<QPointF> across{{3, 2.2}, {13, 13.8}};
  Canvas wider = canvas;
  wider.weight *= 2.4;
  canvas.painter.drawPath(eye.united(pupil).subtracted(strokedLine(wider, across)).united(strokedLine(canvas, across)));
}

void drawCross(const Canvas& canvas) {
  const QPainterPath falling = strokedLine(canvas, {{2.6, 2.6}, {13.4, 13.4}});
  canvas.painter.drawPath(falling.united(strokedLine(canvas, {{13.4, 2.6}, {2.6, 13.4}})));
}

void drawThreeLines(const Canvas& canvas) {
  const double height = canvas.stroke();
  for (const double y : {3.0, 7.25, 11.5}) {
    canvas.painter.drawRect(QRectF(canvas.at(1), canvas.at(y), canvas.side - 2 * canvas.at(1), height));
  }
}

void drawChevronRight(const Canvas& canvas) {
  canvas.painter.drawPath(strokedLine(canvas, {{5, 2.5}, {11, 8}, {5, 13.5}}));
}

struct Symbol {
  std::string_view name;
  void (*draw)(const Canvas&);
};

constexpr std::array symbols{
    Symbol{"arrow.up.and.down.and.arrow.left.and.right", drawMoveArrows},
    Symbol{"checkmark.seal.fill", drawSealWithCheckMark},
    Symbol{"chevron.right", drawChevronRight},
    Symbol{"circle.lefthalf.filled", drawHalfFilledCircle},
    Symbol{"close", drawCross},
    Symbol{"exclamationmark.triangle", drawWarningTriangle},
    Symbol{"eye.slash", drawSlashedEye},
    Symbol{"gauge.with.dots.needle.33percent", drawGauge},
    Symbol{"menu", drawThreeLines},
    Symbol{"sidebar.right", drawSidebarRight},
    Symbol{"viewfinder", drawViewfinder},
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
