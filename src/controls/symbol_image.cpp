#include "controls/symbol_image.h"

#include <cmath>

#include <QPainter>

#include "controls/control.h"

namespace velicor::controls {

namespace {

// A little more than the line's capitals, in even numbers so that what is centred stays on whole pixels.
int sideFor(double fontSize) { return 2 * static_cast<int>(std::lround(fontSize * 0.6)); }

}  // namespace

SymbolImage::SymbolImage(std::string_view name, double fontSize, TextColor color,
                         desktop::SymbolWeight weight, QWidget* parent)
    : QWidget(parent), name_(name), side_(sideFor(fontSize)), color_(color), weight_(weight) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void SymbolImage::setRotation(double degrees) {
  if (degrees == rotation_) return;
  rotation_ = degrees;
  update();
}

void SymbolImage::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const QPointF centre = QRectF(rect()).center();
  painter.translate(centre);
  painter.rotate(rotation_);
  painter.translate(-centre);
  QRectF square(0, 0, side_, side_);
  square.moveCenter(centre);
  if (std::remainder(rotation_, 90) == 0)
    square = QRectF(pixelAligned(painter, square).topLeft(), square.size());
  desktop::drawSymbol(painter, name_, square, touched(colorOf(color_), Control::touchOf(*this)), weight_);
}

}  // namespace velicor::controls
