#include "controls/mini_slider.h"

#include <algorithm>
#include <cmath>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include "platform/desktop/look.h"

namespace velicor::controls {

namespace {

constexpr double knobSide = 12;
constexpr double trackHeight = 4;
constexpr int naturalWidth = 100;
constexpr int leastWidth = 40;
constexpr double pageSteps = 10;

}  // namespace

MiniSlider::MiniSlider(QWidget* parent) : Control(parent) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void MiniSlider::setValue(double value) {
  if (!std::isnan(value)) take(value);
}

bool MiniSlider::take(double value) {
  const double held = std::clamp(value, 0.0, 1.0);
  if (held == value_) return false;
  value_ = held;
  update();
  announceValue(*this, *this);
  return true;
}

void MiniSlider::change(double value) {
  if (take(value) && onChange) onChange(value_);
}

double MiniSlider::knobCentre() const { return knobSide / 2 + value_ * (width() - knobSide); }

QSize MiniSlider::sizeHint() const { return {naturalWidth, controlHeight}; }

QSize MiniSlider::minimumSizeHint() const { return {leastWidth, controlHeight}; }

QRectF MiniSlider::outline() const { return {0, (height() - knobSide) / 2, double(width()), knobSide}; }

double MiniSlider::outlineRadius() const { return knobSide / 2; }

QString MiniSlider::accessibleValue() const {
  return wording ? wording(value_) : QString::number(static_cast<int>(std::lround(value_ * 100))) + u'%';
}

void MiniSlider::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  dragging_ = true;
  setPressed(true);
  const double way = event->position().x() - knobCentre();
  const bool onKnob = std::abs(way) <= knobSide / 2;
  grip_ = onKnob ? way : 0;
  if (!onKnob) mouseMoveEvent(event);
}

void MiniSlider::mouseMoveEvent(QMouseEvent* event) {
  const double travel = width() - knobSide;
  if (!dragging_ || travel <= 0) return;
  change((event->position().x() - grip_ - knobSide / 2) / travel);
}

void MiniSlider::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  dragging_ = false;
  setPressed(false);
}

void MiniSlider::hideEvent(QHideEvent* event) {
  dragging_ = false;
  Control::hideEvent(event);
}

void MiniSlider::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Down:
      return change(value_ - step_);
    case Qt::Key_Right:
    case Qt::Key_Up:
      return change(value_ + step_);
    case Qt::Key_PageDown:
      return change(value_ - pageSteps * step_);
    case Qt::Key_PageUp:
      return change(value_ + pageSteps * step_);
    case Qt::Key_Home:
      return change(0);
    case Qt::Key_End:
      return change(1);
    default:
      Control::keyPressEvent(event);
  }
}

void MiniSlider::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  const QRectF knob =
      pixelAligned(painter, {knobCentre() - knobSide / 2, (height() - knobSide) / 2, knobSide, knobSide});
  paintTrack(painter, knob);
  painter.setBrush(knobColor(touch()));
  painter.drawEllipse(knob);
}

void MiniSlider::paintTrack(QPainter& painter, const QRectF& knob) const {
  const QRectF track = pixelAligned(painter, {0, (height() - trackHeight) / 2, double(width()), trackHeight});
  const double radius = track.height() / 2;
  const Touch state = touch();
  painter.setBrush(state == Touch::hovered || state == Touch::pressed ? look::controlTrackLit
                                                                      : look::controlTrack);
  painter.drawRoundedRect(track, radius, radius);
  QRectF filled = track;
  filled.setRight(knob.center().x());
  painter.setBrush(touched(look::accent, state == Touch::disabled ? state : Touch::none));
  painter.drawRoundedRect(filled, radius, radius);
}

}  // namespace velicor::controls
