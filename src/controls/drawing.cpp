#include "controls/drawing.h"

#include <algorithm>
#include <cmath>

#include <QFontMetricsF>
#include <QPainter>
#include <QTransform>

#include "platform/desktop/continuous_corners.h"
#include "platform/desktop/look.h"

namespace velicor::controls {

QRectF pixelAligned(const QPainter& painter, const QRectF& rect) {
  const QTransform& device = painter.deviceTransform();
  const QRectF mapped = device.mapRect(rect);
  const QPointF topLeft(std::round(mapped.left()), std::round(mapped.top()));
  const QPointF bottomRight(std::round(mapped.right()), std::round(mapped.bottom()));
  return device.inverted().mapRect(QRectF(topLeft, bottomRight));
}

double pixelWidth(const QPainter& painter, double width) {
  const double scale = painter.device()->devicePixelRatio();
  return std::max(1.0, std::round(width * scale)) / scale;
}

QPainterPath continuousBorder(const QRectF& rect, double radius, double width) {
  QPainterPath path = desktop::continuousCorners(rect, radius);
  path.setFillRule(Qt::OddEvenFill);
  const QRectF inner = rect.adjusted(width, width, -width, -width);
  path.addPath(desktop::continuousCorners(inner, std::max(0.0, radius - width)));
  return path;
}

void drawCentred(QPainter& painter, const QRectF& rect, const QFont& font, const QColor& color,
                 const QString& text) {
  const QFontMetricsF metrics(font);
  const double scale = painter.device()->devicePixelRatio();
  const double baseline = rect.center().y() + metrics.capHeight() / 2;
  painter.setFont(font);
  painter.setPen(color);
  painter.drawText(
      QPointF(rect.center().x() - metrics.horizontalAdvance(text) / 2, std::round(baseline * scale) / scale),
      text);
}

QColor touched(QColor color, Touch touch) {
  const float alpha = color.alphaF();
  switch (touch) {
    case Touch::hovered:
      if (alpha == 1) color = color.lighter(115);
      color.setAlphaF(alpha + (1 - alpha) * 0.6F);
      break;
    case Touch::pressed:
      color.setAlphaF(alpha * 0.7F);
      break;
    case Touch::disabled:
      color.setAlphaF(alpha * 0.4F);
      break;
    case Touch::none:
      break;
  }
  return color;
}

QColor knobColor(Touch touch) {
  if (touch == Touch::disabled) return look::controlKnobDisabled;
  return touch == Touch::pressed ? look::controlKnobPressed : look::controlKnob;
}

}  // namespace velicor::controls
