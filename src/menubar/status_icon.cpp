#include "menubar/status_icon.h"

#include <QPainter>
#include <QPen>

namespace velicor::status_icon {

namespace {

constexpr QRectF circle(1.44, 1.44, 15.12, 15.12);
constexpr double circleWidth = 1.3;
constexpr double needleWidth = 2.6;

// At 0.92 of the radius, 123° counter-clockwise from the positive x axis, y up.
constexpr QPointF needleTip(5.211926583663484, 14.833121534174012);

}  // namespace

void draw(QPainter& painter, const QColor& color) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(0, side);
  painter.scale(1, -1);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(color, circleWidth));
  painter.drawEllipse(circle);
  painter.setPen(QPen(color, needleWidth, Qt::SolidLine, Qt::RoundCap));
  painter.drawLine(circle.center(), needleTip);
  painter.restore();
}

}  // namespace velicor::status_icon
