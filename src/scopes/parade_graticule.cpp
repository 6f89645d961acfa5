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

QPen penFor(double level) {
  const bool end = level == levels.front() || level == levels.back();
  QPen pen(look::faded(Qt::white, end ? endOpacity : innerOpacity), lineWidth, Qt::SolidLine, Qt::FlatCap,
           Qt::MiterJoin);
  pen.setMiterLimit(miterLimit);
  if (!end) pen.setDashPattern({dash / lineWidth, dash / lineWidth});  // the toolkit counts in widths of the pen
  return pen;
}

}  // namespace

void ParadeGraticule::draw(QPainter& painter, QSizeF canvas) const {
  const double h = canvas.height();
  for (const double level : levels) {
    const double y = h * (1 - level);
    const double line = graticule::onPixels(painter, y, lineWidth, h);
    painter.setPen(penFor(level));
    painter.drawLine(QPointF(0, line), QPointF(canvas.width(), line));
    graticule::drawLabel(painter, {labelX, std::max(y - labelRise, labelInset)},
                         QString::number(static_cast<int>(level * 100)));
  }
}

}  // namespace velicor
