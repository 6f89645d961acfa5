#include "controls/control.h"

#include <utility>

#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>

#include "controls/focus_ring.h"
#include "controls/push_button.h"

namespace velicor::controls {

Control::Control(QWidget* parent) : QWidget(parent) {
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_Hover);
}

Control::~Control() { delete ring_; }

Touch Control::touch() const {
  if (!isEnabled()) return Touch::disabled;
  if (pressed_) return Touch::pressed;
  return underMouse() ? Touch::hovered : Touch::none;
}

Touch Control::touchOf(const QWidget& widget) {
  for (const QWidget* ancestor = &widget; ancestor; ancestor = ancestor->parentWidget()) {
    if (const auto* control = dynamic_cast<const Control*>(ancestor)) return control->touch();
  }
  return Touch::none;
}

bool Control::event(QEvent* event) {
  if (event->type() == QEvent::KeyPress && hasFocus()) noteInput(true);
  if (event->type() == QEvent::MouseButtonPress) noteInput(false);
  return QWidget::event(event);
}

void Control::noteInput(bool keys) {
  usesKeys_ = keys;
  setRing(keys);
}

void Control::focusInEvent(QFocusEvent* event) {
  const Qt::FocusReason reason = event->reason();
  // Coming back to the window leaves things as they were.
  const bool returning = reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason;
  const bool byKeys =
      reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason || reason == Qt::ShortcutFocusReason;
  noteInput(returning ? usesKeys_ : byKeys);
}

void Control::focusOutEvent(QFocusEvent*) {
  setRing(false);
  setPressed(false);
}

void Control::changeEvent(QEvent* event) {
  if (event->type() == QEvent::EnabledChange) setPressed(false);
  QWidget::changeEvent(event);
}

// The release of a press goes elsewhere when the control is taken away under the mouse.
void Control::hideEvent(QHideEvent*) { setPressed(false); }

void Control::setPressed(bool pressed) {
  if (std::exchange(pressed_, pressed) != pressed) update();
}

void Control::setRing(bool on) {
  if (on == !ring_.isNull()) return;
  if (on) {
    ring_ = new FocusRing(*this);
  } else {
    delete ring_;
  }
}

void ButtonControl::click() {
  if (isEnabled()) activate();
}

void ButtonControl::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  tracking_ = true;
  setPressed(true);
}

void ButtonControl::mouseMoveEvent(QMouseEvent* event) {
  if (tracking_) setPressed(rect().contains(event->position().toPoint()));
}

void ButtonControl::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !std::exchange(tracking_, false)) return;
  const bool inside = isPressed() && rect().contains(event->position().toPoint());
  setPressed(false);
  if (inside) click();
}

void ButtonControl::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Space:
      if (!event->isAutoRepeat()) setPressed(true);
      return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (event->isAutoRepeat() || PushButton::clickDefault(*window())) return;
      return click();
    default:
      Control::keyPressEvent(event);
  }
}

void ButtonControl::keyReleaseEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Space) return Control::keyReleaseEvent(event);
  if (event->isAutoRepeat() || !isPressed()) return;
  setPressed(false);
  click();
}

}  // namespace velicor::controls
