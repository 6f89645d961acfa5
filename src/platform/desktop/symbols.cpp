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

struct Symbol {
  std::string_view name;
  void (*draw)(const Canvas&);
};

constexpr std::array symbols{
    Symbol{"arrow.up.and.down.and.arrow.left.and.right", drawMoveArrows},
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
