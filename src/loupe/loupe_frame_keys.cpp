// The loupe frame by keys, and for assistive tools.
#include <utility>

#include <QKeyEvent>

#include "loupe/loupe_frame_view.h"
#include "loupe/loupe_keys.h"
#include "platform/desktop/panel.h"

namespace velicor {

void LoupeFrameView::setUsesKeys(bool uses) {
  if (std::exchange(usesKeys_, uses) != uses) update();
}

// The mouse has the loupe as long as it holds it.
void LoupeFrameView::keyPressEvent(QKeyEvent* event) {
  const desktop::Panel* panel = desktop::Panel::of(this);
  const auto step = loupe_keys::stepFor(event->key(), event->modifiers());
  if (!panel || pressActive_) return;
  if (step) {
    setUsesKeys(true);
    if (isLocked) return;
    keyStepActive_ = isInteracting_ = true;
    if (onDrag) onDrag(step->zone, step->delta, panel->frame());
    return update();
  }
  if (event->isAutoRepeat()) return;
  switch (event->key()) {
    case Qt::Key_Space:
      return activateAccessibly();
    case Qt::Key_Escape:
      if (onLeave) onLeave();
      return;
    default:
      QWidget::keyPressEvent(event);
  }
}

void LoupeFrameView::keyReleaseEvent(QKeyEvent* event) {
  if (event->isAutoRepeat() || !keyStepActive_) return QWidget::keyReleaseEvent(event);
  endKeyStep();
}

void LoupeFrameView::endKeyStep() {
  if (!std::exchange(keyStepActive_, false)) return;
  isInteracting_ = false;
  update();
  announceFrame();
  if (onKeyRelease) onKeyRelease();
}

void LoupeFrameView::focusInEvent(QFocusEvent*) { update(); }

// The release of a key goes where the keyboard goes.
void LoupeFrameView::focusOutEvent(QFocusEvent*) {
  endKeyStep();
  usesKeys_ = false;
  update();
}

void LoupeFrameView::announceFrame() { controls::announceDescription(*this); }

void LoupeFrameView::activateAccessibly() {
  if (onPanelToggle) onPanelToggle();
}

QString LoupeFrameView::accessibleText() const { return QStringLiteral("Loupe"); }

QString LoupeFrameView::accessibleDescription() const {
  const desktop::Panel* panel = desktop::Panel::of(this);
  if (!panel) return {};
  const DesktopRect& frame = panel->frame();
  const QString size = QStringLiteral("%1 × %2 points").arg(int(frame.width)).arg(int(frame.height));
  return isLocked ? size + QStringLiteral(", locked") : size;
}

void LoupeFrameView::describeState(QAccessible::State& state) const {
  state.movable = !isLocked;
  state.sizeable = !isLocked;
}

}  // namespace velicor
