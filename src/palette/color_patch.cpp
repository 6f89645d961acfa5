#include "palette/color_patch.h"

#include <algorithm>

#include <QLinearGradient>
#include <QPainter>

#include "controls/control.h"
#include "controls/drawing.h"
#include "platform/base/geometry.h"
#include "platform/desktop/continuous_corners.h"
#include "platform/desktop/look.h"

namespace velicor {

namespace {

int byteOf(double component) { return roundHalfAway(std::clamp(component, 0.0, 1.0) * 255); }

}  // namespace

QColor colorOf(const Palette::RGB& rgb) { return {byteOf(rgb.r), byteOf(rgb.g), byteOf(rgb.b)}; }

ColorPatch::ColorPatch(const QSize& size, double radius, QWidget* parent) : QWidget(parent), radius_(radius) {
  setFixedSize(size);
}

void ColorPatch::setStops(const QGradientStops& stops) {
  if (stops == stops_) return;
  stops_ = stops;
  update();
}

void ColorPatch::setBorder(const Border& border) {
  if (border == border_) return;
  border_ = border;
  update();
}

void ColorPatch::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF shape = controls::pixelAligned(painter, rect());
  QLinearGradient fill(shape.topLeft(), shape.topRight());
  fill.setStops(stops_);
  painter.fillPath(desktop::continuousCorners(shape, radius_), stops_.size() == 1 ? QBrush(color()) : QBrush(fill));
  if (border_.width == 0) return;
  const bool lit = controls::Control::touchOf(*this) == controls::Touch::hovered;
  painter.fillPath(
      controls::continuousBorder(shape, radius_, controls::pixelWidth(painter, border_.width)),
      look::white(lit ? std::max(border_.opacity, 0.6) : border_.opacity));
}

}  // namespace velicor
