#include "controls/motion.h"

#include <utility>

#include <QPointF>

#include "platform/desktop/reduced_motion.h"

namespace velicor::controls {

namespace {

QEasingCurve easeOut() {
  QEasingCurve curve(QEasingCurve::BezierSpline);
  curve.addCubicBezierSegment(QPointF(0, 0), QPointF(0.58, 1), QPointF(1, 1));
  return curve;
}

}  // namespace

Motion::Motion(double start, std::function<void()> onStep)
    : onStep_(std::move(onStep)), value_(start), target_(start) {
  animation_.setEasingCurve(easeOut());
  QObject::connect(&animation_, &QVariantAnimation::valueChanged, &animation_,
                   [this](const QVariant& value) { step(value.toDouble()); });
}

void Motion::moveTo(double target, std::chrono::milliseconds time) {
  if (target == target_) return;
  if (desktop::prefersReducedMotion()) return jumpTo(target);
  target_ = target;
  animation_.stop();
  animation_.setDuration(static_cast<int>(time.count()));
  animation_.setStartValue(value_);
  animation_.setEndValue(target);
  animation_.start();
}

void Motion::jumpTo(double target) {
  animation_.stop();
  if (target == target_ && target == value_) return;
  target_ = target;
  step(target);
}

void Motion::step(double value) {
  if (value == value_) return;
  value_ = value;
  onStep_();
}

}  // namespace velicor::controls
