#pragma once

#include <functional>

#include "controls/control.h"

namespace velicor::controls {

// A mini slider from 0 to 1 without steps. A press on the track takes the knob there and goes on as a drag.
// Arrow keys move by a step, page keys by ten, Home and End to the ends. As wide as it gets. Main thread.
class MiniSlider : public Control {
 public:
  explicit MiniSlider(QWidget* parent = nullptr);

  // The user has moved it, on every movement.
  std::function<void(double value)> onChange;

  double value() const { return value_; }

  // Held within 0…1; what is no number changes nothing.
  void setValue(double value);

  // Of the arrow keys; 0.01 at first.
  void setStep(double step) { step_ = step; }

  // The value in words, for assistive tools; a percentage at first.
  std::function<QString(double value)> wording;

  // Where the knob's centre is, in points from the left.
  double knobCentre() const;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
  QRectF outline() const override;
  double outlineRadius() const override;

  QAccessible::Role accessibleRole() const override { return QAccessible::Slider; }
  QString accessibleValue() const override;
  std::optional<Range> accessibleRange() const override { return Range{value_, 0, 1, step_}; }
  void setAccessibleValue(double value) override { change(value); }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  bool take(double value);
  void change(double value);
  void paintTrack(QPainter& painter, const QRectF& knob) const;

  double value_ = 0;
  double step_ = 0.01;
  bool dragging_ = false;
  double grip_ = 0;  // from the knob's centre to where the mouse took hold of it
};

}  // namespace velicor::controls
