#include "scopes/parade_graticule.h"

#include <algorithm>
#include <array>

#include <QPainter>

#include "platform/desktop/look.h"

namespace velicor {

namespace {

constexpr std::array levels{0.0, 0.25, 0.5, 0.75, 1.0};  // of full scale
constexpr double endOpacity = 0.45;
constexpr double innerOpacity = 0.2;
constexpr double lineWidth = 0.5;
constexpr double dash = 4;
constexpr double miterLimit = 10;
constexpr double labelX = 12;
constexpr double labelRise = 7;   // of a label's centre above its line
constexpr double labelInset = 8;  // from the top edge at least
constexpr double labelHeight = 8;

bool isEnd(double level) { return level == levels.front() || level == levels.back(); }

QPen penFor(double level) {
  QPen pen(look::faded(Qt::white, isEnd(level) ? endOpacity : innerOpacity), lineWidth, Qt::SolidLine, Qt::FlatCap,
           Qt::MiterJoin);
  pen.setMiterLimit(miterLimit);
  return pen;
}

// Solid at the ends, else dashes with gaps of their length. The toolkit's own dashes are longer for thin pens.
void drawLine(QPainter& painter, double level, double y, double width) {
  if (isEnd(level)) return painter.drawLine(QPointF(0, y), QPointF(width, y));
  for (int i = 0; 2 * dash * i < width; ++i) {
    const double x = 2 * dash * i;
    painter.drawLine(QPointF(x, y), QPointF(std::min(x + dash, width), y));
  }
}

// The one of the highest level hangs below its line. Where little room is left, the next one would be printed
// over it.
void drawLabel(QPainter& painter, double level, double y) {
  const double centre = std::max(y - labelRise, labelInset);
  if (level != levels.back() && centre < labelInset + labelHeight) return;
  graticule::drawLabel(painter, {labelX, centre}, QString::number(static_cast<int>(level * 100)));
}

}  // namespace

void ParadeGraticule::draw(QPainter& painter, QSizeF canvas) const {
  const double h = canvas.height();
  for (const double level : levels) {
    const double y = h * (1 - level);
    painter.setPen(penFor(level));
    drawLine(painter, level, graticule::onPixels(painter, y, lineWidth, h), canvas.width());
    drawLabel(painter, level, y);
  }
}

}  // namespace velicor
