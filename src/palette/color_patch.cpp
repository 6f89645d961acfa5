#include "palette/color_patch.h"

#include <algorithm>

#include <QLinearGradient>
#include <QPainter>

#include "controls/control.h"
#include "controls/drawing.h"
#include "platform/desktop/continuous_corners.h"
#include "platform/desktop/look.h"

namespace velicor {

namespace {

// How strong the border of a patch is at least while the pointer is at work on it.
double leastOpacity(controls::Touch touch) {
  if (touch == controls::Touch::pressed) return 0.9;
  return touch == controls::Touch::hovered ? 0.6 : 0;
}

}  // namespace

QColor colorOf(const Palette::RGB& rgb) {
  return {Palette::RGB::byteOf(rgb.r), Palette::RGB::byteOf(rgb.g), Palette::RGB::byteOf(rgb.b)};
}

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
  const controls::Touch touch = controls::Control::touchOf(*this);
  if (touch == controls::Touch::disabled) painter.setOpacity(0.4);
  QLinearGradient fill(shape.topLeft(), shape.topRight());
  fill.setStops(stops_);
  painter.fillPath(desktop::continuousCorners(shape, radius_),
                   stops_.size() == 1 ? QBrush(color()) : QBrush(fill));
  if (border_.width == 0) return;
  painter.fillPath(controls::continuousBorder(shape, radius_, controls::pixelWidth(painter, border_.width)),
                   look::white(std::max(border_.opacity, leastOpacity(touch))));
}

}  // namespace velicor
