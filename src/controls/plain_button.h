#pragma once

#include <functional>
#include <string_view>

#include <QMargins>

#include "controls/control.h"

class QHBoxLayout;

namespace velicor::controls {

// A button without a border: its content, with the whole rectangle taking the click. Main thread.
class PlainButton : public ButtonControl {
 public:
  // Takes the content over and stretches it over the rectangle, where it has no size of its own. Give the
  // button an accessible name where the content isn't text.
  explicit PlainButton(QWidget* content, QWidget* parent = nullptr);

  // May destroy the button.
  std::function<void()> onClick;

  QWidget& content() const { return *content_; }

  // Room around the content that takes clicks too. The ring stays around the content.
  void setClickMargins(const QMargins& margins);

  // For buttons that stay on: a tab, a disclosure.
  void setAccessibleState(std::function<void(QAccessible::State&)> describe) { describe_ = std::move(describe); }
  void setAccessibleKind(QAccessible::Role role) { role_ = role; }

  // Corners of the ring.
  void setOutlineRadius(double radius) { outlineRadius_ = radius; }

  QRectF outline() const override;
  double outlineRadius() const override { return outlineRadius_; }
  QAccessible::Role accessibleRole() const override { return role_; }
  QString accessibleText() const override;
  void describeState(QAccessible::State& state) const override {
    if (describe_) describe_(state);
  }

 protected:
  void activate() override {
    if (onClick) onClick();
  }

 private:
  QWidget* const content_;
  QHBoxLayout* const layout_;
  std::function<void(QAccessible::State&)> describe_;
  QAccessible::Role role_ = QAccessible::Button;
  double outlineRadius_ = 3;
};

// A small square one in the strip along the top of a panel, which shows a symbol.
PlainButton* makeTitleButton(std::string_view symbol, const QString& name, QWidget* parent = nullptr);

}  // namespace velicor::controls
