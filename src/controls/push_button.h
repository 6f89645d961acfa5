#pragma once

#include <functional>

#include <QString>

#include "controls/control.h"

namespace velicor::controls {

// A small button with a border. Main thread.
class PushButton : public ButtonControl {
 public:
  explicit PushButton(const QString& title, QWidget* parent = nullptr);

  // May destroy the button.
  std::function<void()> onClick;

  const QString& title() const { return title_; }
  void setTitle(const QString& title);

  // Return presses the default button of a window, whichever of our controls has the keyboard. Windows whose
  // focus is elsewhere hand Return on by clickDefault().
  bool isDefault() const { return default_; }
  void setDefault(bool on);

  // Clicks the window's default button; false where none can be clicked.
  static bool clickDefault(const QWidget& window);

  QSize sizeHint() const override;
  double outlineRadius() const override;
  QAccessible::Role accessibleRole() const override { return QAccessible::Button; }
  QString accessibleText() const override { return title_; }
  void describeState(QAccessible::State& state) const override { state.defaultButton = default_; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void activate() override {
    if (onClick) onClick();
  }

 private:
  QString title_;
  bool default_ = false;
};

}  // namespace velicor::controls
