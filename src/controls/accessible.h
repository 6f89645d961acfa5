#pragma once

#include <optional>

#include <QAccessible>
#include <QString>

class QWidget;

namespace velicor::controls {

// What assistive tools are told about a widget of ours, beside what every widget tells. Widgets inherit this
// next to QWidget. Main thread.
class Accessible {
 public:
  struct Range {
    double value = 0;
    double minimum = 0;
    double maximum = 1;
    double step = 0.01;
  };

  virtual ~Accessible() = default;
  virtual QAccessible::Role accessibleRole() const = 0;

  // What the widget shows; its name unless it was given another one.
  virtual QString accessibleText() const { return {}; }

  // Its value in words, where it has one.
  virtual QString accessibleValue() const { return {}; }

  // What there is to say about it besides: the value in words, because the bus carries that in numbers only.
  virtual QString accessibleDescription() const { return accessibleValue(); }

  virtual void describeState(QAccessible::State&) const {}

  // Its value in numbers, where it can be set.
  virtual std::optional<Range> accessibleRange() const { return std::nullopt; }

  // As if the user had done it.
  virtual void setAccessibleValue(double) {}
  virtual bool canBeActivated() const { return false; }
  virtual void activateAccessibly() {}

 protected:
  // Also makes widgets of this kind known to the toolkit.
  Accessible();
};

// To be called after the widget's value, or what it shows, has changed.
void announceValue(QWidget& widget, const Accessible& facts);
void announceDescription(QWidget& widget);
void announceChecked(QWidget& widget);
void announceSelected(QWidget& widget);
void announceExpanded(QWidget& widget);

}  // namespace velicor::controls
