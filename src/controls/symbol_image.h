#pragma once

#include <string_view>

#include <QWidget>

#include "controls/accessible.h"
#include "controls/label.h"
#include "platform/desktop/symbols.h"

namespace velicor::controls {

// A symbol beside text of that size: a square of a whole, even number of points. In a button it answers to
// the mouse as the button does. Says nothing to assistive tools unless it is given a name. Main thread.
class SymbolImage : public QWidget, public Accessible {
 public:
  // The symbol's name must outlive it.
  SymbolImage(std::string_view name, double fontSize, TextColor color,
              desktop::SymbolWeight weight = desktop::SymbolWeight::regular, QWidget* parent = nullptr);

  std::string_view name() const { return name_; }

  // Clockwise about its centre; takes no other room.
  void setRotation(double degrees);
  double rotation() const { return rotation_; }

  QSize sizeHint() const override { return {side_, side_}; }
  QAccessible::Role accessibleRole() const override { return QAccessible::Graphic; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  const std::string_view name_;
  const int side_;
  const TextColor color_;
  const desktop::SymbolWeight weight_;
  double rotation_ = 0;
};

}  // namespace velicor::controls
