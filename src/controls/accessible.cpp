#include "controls/accessible.h"

#include <QAccessibleWidget>
#include <QWidget>

namespace velicor::controls {

namespace {

class AccessibleFacts : public QAccessibleWidget, public QAccessibleValueInterface {
 public:
  AccessibleFacts(QWidget* widget, Accessible& facts)
      : QAccessibleWidget(widget, facts.accessibleRole()), facts_(facts) {}

  QString text(QAccessible::Text which) const override {
    if (which == QAccessible::Value) return facts_.accessibleValue();
    QString own = QAccessibleWidget::text(which);
    if (!own.isEmpty()) return own;
    if (which == QAccessible::Description) return facts_.accessibleDescription();
    return which == QAccessible::Name ? facts_.accessibleText() : own;
  }

  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    facts_.describeState(state);
    return state;
  }

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::ValueInterface && facts_.accessibleRange())
      return static_cast<QAccessibleValueInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
  }

  QStringList actionNames() const override {
    QStringList names = QAccessibleWidget::actionNames();
    if (facts_.canBeActivated()) names.prepend(pressAction());
    return names;
  }

  void doAction(const QString& name) override {
    if (name != pressAction()) return QAccessibleWidget::doAction(name);
    if (widget()->isEnabled()) facts_.activateAccessibly();
  }

  QVariant currentValue() const override { return range().value; }
  QVariant minimumValue() const override { return range().minimum; }
  QVariant maximumValue() const override { return range().maximum; }
  QVariant minimumStepSize() const override { return range().step; }
  void setCurrentValue(const QVariant& value) override {
    if (widget()->isEnabled()) facts_.setAccessibleValue(value.toDouble());
  }

 private:
  Accessible::Range range() const { return facts_.accessibleRange().value_or(Accessible::Range{}); }

  Accessible& facts_;
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
  auto* facts = dynamic_cast<Accessible*>(object);
  return facts ? new AccessibleFacts(static_cast<QWidget*>(object), *facts) : nullptr;
}

void announce(QWidget& widget, QAccessible::State changed) {
  if (!QAccessible::isActive()) return;
  QAccessibleStateChangeEvent event(&widget, changed);
  QAccessible::updateAccessibility(&event);
}

}  // namespace

Accessible::Accessible() {
  [[maybe_unused]] static const bool once = (QAccessible::installFactory(makeInterface), true);
}

void announceDescription(QWidget& widget) {
  if (!QAccessible::isActive()) return;
  QAccessibleEvent event(&widget, QAccessible::DescriptionChanged);
  QAccessible::updateAccessibility(&event);
}

void announceValue(QWidget& widget, const Accessible& facts) {
  if (!QAccessible::isActive()) return;
  const auto range = facts.accessibleRange();
  QAccessibleValueChangeEvent event(&widget,
                                    range ? QVariant(range->value) : QVariant(facts.accessibleValue()));
  QAccessible::updateAccessibility(&event);
  announceDescription(widget);
}

void announceChecked(QWidget& widget) {
  QAccessible::State changed;
  changed.checked = true;
  announce(widget, changed);
}

void announceSelected(QWidget& widget) {
  QAccessible::State changed;
  changed.selected = true;
  announce(widget, changed);
}

void announceExpanded(QWidget& widget) {
  QAccessible::State changed;
  changed.expanded = true;
  announce(widget, changed);
}

}  // namespace velicor::controls
