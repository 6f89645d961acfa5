#include "platform/desktop/panel_drag.h"

#include <cmath>
#include <utility>

#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

#include "platform/desktop/desktop.h"
#include "platform/desktop/panel.h"
#include "platform/desktop/pointer.h"

namespace velicor::desktop {

namespace {

// A click may tremble by less than this many points.
constexpr double tremble = 3;

}  // namespace

void PanelDrag::press(const QMouseEvent& event) {
  if (event.button() != Qt::LeftButton) return;
  start_ = Start{panel_.desktop().pointer().positionOf(event), panel_.frame()};
}

// A manager that takes up the request when the button is up again leaves the panel hanging on the pointer: it is
// asked when the mouse has moved, and only while the button is really down. It measures from where the mouse is
// then, so the panel has caught up by itself before.
void PanelDrag::move(const QMouseEvent& event) {
  if (!start_ || !event.buttons().testFlag(Qt::LeftButton)) return;
  const DesktopPoint mouse = panel_.desktop().pointer().positionOf(event);
  const double dx = mouse.x - start_->mouse.x;
  const double dy = mouse.y - start_->mouse.y;
  if (!start_->moving && std::hypot(dx, dy) < tremble) return;
  DesktopRect frame = start_->frame;
  frame.x += dx;
  frame.y += dy;
  panel_.setFrame(frame);
  const bool begins = !std::exchange(start_->moving, true);
  const bool canBeTakenOver = !panel_.isBypassing() && panel_.desktop().pointer().isPressed();
  if (begins && canBeTakenOver && panel_.window().windowHandle()->startSystemMove()) start_.reset();
}

}  // namespace velicor::desktop
