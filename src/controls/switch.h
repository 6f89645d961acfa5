#pragma once

#include <functional>

#include <QString>

#include "controls/control.h"
#include "controls/motion.h"

namespace velicor::controls {

// A mini switch with its title before it. Main thread.
class Switch : public ButtonControl {
 public:
  explicit Switch(const QString& title, QWidget* parent = nullptr);

  // The user has turned it.
  std::function<void(bool on)> onChange;

  bool isOn() const { return on_; }
  void setOn(bool on);

  QSize sizeHint() const override;

  // The track.
  QRectF outline() const override;
  double outlineRadius() const override;
  QAccessible::Role accessibleRole() const override { return QAccessible::CheckBox; }
  QString accessibleText() const override { return title_; }
  void describeState(QAccessible::State& state) const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void activate() override;

 private:
  void turn(bool on);

  const QString title_;
  bool on_ = false;
  Motion knob_;  // 0 off … 1 on
};

}  // namespace velicor::controls
