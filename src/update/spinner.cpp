#include "update/spinner.h"

#include <QPainter>
#include <QTimerEvent>

#include "platform/desktop/look.h"
#include "platform/desktop/reduced_motion.h"

namespace velicor {

namespace {

constexpr int side = 16;
constexpr int strokes = 8;
constexpr int stepMilliseconds = 100;
constexpr int calmStepMilliseconds = 500;
constexpr double thickness = 1.5;

}  // namespace

Spinner::Spinner(QWidget* parent) : QWidget(parent) { setFixedSize(side, side); }

void Spinner::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(side / 2.0, side / 2.0);
  for (int stroke = 0; stroke < strokes; ++stroke) {
    const int behind = (brightest_ - stroke + strokes) % strokes;
    const double fade = 1.0 - static_cast<double>(behind) / strokes;
    painter.setPen(
        QPen(look::faded(look::secondaryText, 0.15 + 0.65 * fade), thickness, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(0, -3.5), QPointF(0, -6.5));
    painter.rotate(360.0 / strokes);
  }
}

void Spinner::timerEvent(QTimerEvent*) {
  brightest_ = (brightest_ + 1) % strokes;
  update();
}

void Spinner::showEvent(QShowEvent*) {
  timer_.start(desktop::prefersReducedMotion() ? calmStepMilliseconds : stepMilliseconds, this);
}

void Spinner::hideEvent(QHideEvent*) { timer_.stop(); }

}  // namespace velicor
