#include "scopes/graticule.h"

#include <algorithm>
#include <cmath>

#include <QFontMetricsF>
#include <QPainter>

#include "platform/base/geometry.h"
#include "platform/desktop/continuous_corners.h"
#include "platform/desktop/look.h"
#include "platform/desktop/pixel_place.h"
#include "platform/desktop/typeface.h"

namespace velicor {

namespace {

constexpr double labelSize = 8;

}  // namespace

Graticule::Graticule(QWidget* parent) : QWidget(parent) { setAttribute(Qt::WA_TransparentForMouseEvents); }

void Graticule::setCornerRadius(double radius) {
  cornerRadius_ = radius;
  drawing_ = {};
  update();
}

void Graticule::paintEvent(QPaintEvent*) {
  const desktop::PixelPlace place = desktop::pixelPlaceOf(*this);
  const QSize pixels(place.inWindow.width, place.inWindow.height);
  if (pixels.isEmpty()) return;
  if (drawing_.size() != pixels || drawing_.devicePixelRatio() != devicePixelRatioF()) drawing_ = drawn(pixels);
  QPainter(this).drawImage(place.inWidget.topLeft(), drawing_);
}

QImage Graticule::drawn(QSize pixels) const {
  QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(devicePixelRatioF());
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  if (cornerRadius_ > 0) {
    painter.setClipPath(desktop::continuousCorners(QRectF({}, image.deviceIndependentSize()), cornerRadius_));
  }
  draw(painter, image.deviceIndependentSize());
  return image;
}

namespace graticule {

double onPixels(const QPainter& painter, double position, double width, double extent) {
  const double scale = painter.device()->devicePixelRatio();
  const double pixels = std::ceil(width * scale);
  const double last = std::max(0.0, extent * scale - pixels);
  const double first = std::clamp<double>(roundHalfAway(position * scale - pixels / 2), 0, last);
  return (first + pixels / 2) / scale;
}

void drawLabel(QPainter& painter, QPointF centre, const QString& text) {
  const QFont font = desktop::interfaceFont(labelSize);
  const QFontMetricsF metrics(font);
  const double scale = painter.device()->devicePixelRatio();
  const double baseline = centre.y() + (metrics.ascent() - metrics.descent()) / 2;
  painter.setFont(font);
  painter.setPen(look::systemGrey);
  painter.drawText(QPointF(centre.x() - metrics.horizontalAdvance(text) / 2, roundHalfAway(baseline * scale) / scale),
                   text);
}

}  // namespace graticule
}  // namespace velicor
