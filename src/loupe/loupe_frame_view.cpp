#include "loupe/loupe_frame_view.h"

#include <utility>

#include <QImage>
#include <QMouseEvent>
#include <QPainter>

#include "platform/desktop/desktop.h"
#include "platform/desktop/panel.h"
#include "platform/desktop/pixel_place.h"
#include "platform/desktop/pointer.h"
#include "platform/desktop/screen_layout.h"

namespace velicor {

using desktop::Cursor;
using desktop::Panel;

LoupeFrameView::LoupeFrameView(const QRect& frame, QWidget* parent) : QWidget(parent) {
  setGeometry(frame);
  setMouseTracking(true);
  setFocusPolicy(Qt::ClickFocus);
}

// The panel's own size where there is one: the widget's is rounded to whole points.
FrameRect LoupeFrameView::bounds() const {
  const Panel* panel = Panel::of(this);
  if (panel) return {0, 0, panel->frame().width, panel->frame().height};
  return {0, 0, double(width()), double(height())};
}

LoupeFrameView::Zone LoupeFrameView::zone(FramePoint point) const {
  return loupe_geometry::zoneAt(point, bounds());
}

Cursor LoupeFrameView::cursor(Zone zone) const {
  switch (zone) {
    case Zone::left:
    case Zone::right:
      return Cursor::resizeLeftRight;
    case Zone::top:
    case Zone::bottom:
      return Cursor::resizeUpDown;
    case Zone::topLeft:
      return Cursor::frameResizeTopLeft;
    case Zone::topRight:
      return Cursor::frameResizeTopRight;
    case Zone::bottomLeft:
      return Cursor::frameResizeBottomLeft;
    case Zone::bottomRight:
      return Cursor::frameResizeBottomRight;
    case Zone::panelButton:
      return Cursor::pointingHand;
    case Zone::move:
      break;
  }
  return Cursor::openHand;
}

std::array<FramePoint, 8> LoupeFrameView::handlePoints() const {
  return loupe_geometry::handlePoints(bounds());
}

FrameRect LoupeFrameView::panelChip() const { return loupe_geometry::panelChip(bounds()); }

bool LoupeFrameView::isScreenPointOverPanelChip(DesktopPoint point) const {
  const Panel* panel = Panel::of(this);
  return panel && panelChip().contains(desktop::toFrame(point, panel->frame()));
}

Cursor LoupeFrameView::cursorAtScreenPoint(DesktopPoint point) const {
  const Panel* panel = Panel::of(this);
  return panel ? cursorAt(desktop::toFrame(point, panel->frame())) : Cursor::arrow;
}

Cursor LoupeFrameView::cursorAt(FramePoint point) const {
  if (isLocked) return panelChip().contains(point) ? Cursor::pointingHand : Cursor::arrow;
  return cursor(zone(point));
}

// The toolkit names a pixel by its corner, we by its centre.
FramePoint LoupeFrameView::locationOf(const QMouseEvent& event) const {
  const double half = 0.5 / devicePixelRatioF();
  const ViewPoint point{event.position().x() + half, event.position().y() + half};
  return desktop::toFrame(point, bounds().height);
}

void LoupeFrameView::mouseMoveEvent(QMouseEvent* event) {
  if (event->buttons().testFlag(Qt::LeftButton)) return mouseDragged(*event);
  if (event->buttons() != Qt::NoButton) return;
  abandonPress();
  mouseMoved(locationOf(*event));
}

void LoupeFrameView::mouseMoved(FramePoint point) {
  if (Panel* panel = Panel::of(this)) panel->setCursor(cursorAt(point));
}

void LoupeFrameView::leaveEvent(QEvent*) {
  if (Panel* panel = Panel::of(this)) panel->setCursor(Cursor::arrow);
}

void LoupeFrameView::mousePressEvent(QMouseEvent* event) {
  const Panel* panel = Panel::of(this);
  if (!panel || event->button() != Qt::LeftButton) return;
  setUsesKeys(false);
  const Zone pressed = zone(locationOf(*event));
  if (isLocked && pressed != Zone::panelButton) return;
  pressActive_ = true;
  dragZone_ = pressed;
  dragStartMouse_ = panel->desktop().pointer().positionOf(*event);
  dragStartFrame_ = panel->frame();
  if (pressed == Zone::panelButton) return;
  isInteracting_ = true;
  update();
}

// Measured from the press each time: steps that were merged or rounded leave nothing behind.
void LoupeFrameView::mouseDragged(const QMouseEvent& event) {
  const Panel* panel = Panel::of(this);
  if (!pressActive_ || dragZone_ == Zone::panelButton || !panel) return;
  const DesktopPoint mouse = panel->desktop().pointer().positionOf(event);
  const DesktopSize displacement{mouse.x - dragStartMouse_.x, mouse.y - dragStartMouse_.y};
  if (onDrag) onDrag(dragZone_, displacement, dragStartFrame_);
}

void LoupeFrameView::mouseReleaseEvent(QMouseEvent* event) {
  if (!pressActive_ || event->button() != Qt::LeftButton) return;
  pressActive_ = false;
  const bool toggles = dragZone_ == Zone::panelButton && panelChip().contains(locationOf(*event));
  if (toggles && onPanelToggle) onPanelToggle();
  isInteracting_ = false;
  update();
  if (onRelease) onRelease();
}

void LoupeFrameView::hideEvent(QHideEvent*) {
  abandonPress();
  endKeyStep();
}

// The release of a press goes elsewhere when the window is taken away or the mouse grabbed under it.
void LoupeFrameView::abandonPress() {
  if (!std::exchange(pressActive_, false)) return;
  isInteracting_ = false;
  update();
}

void LoupeFrameView::paintEvent(QPaintEvent*) {
  const DeviceRect pixels = desktop::pixelPlaceOf(*this).inWindow;
  const Painted wanted{{bounds(), isLocked, panelVisible, isInteracting_, showsFocus()},
                       {pixels.width, pixels.height},
                       devicePixelRatioF()};
  if (wanted != painted_) {
    picture_ = pictureOf(wanted);
    painted_ = wanted;
  }
  QPainter painter(this);
  picture_.paint(painter);
}

SparsePicture LoupeFrameView::pictureOf(const Painted& wanted) {
  if (wanted.pixels.isEmpty()) return {};
  QImage image(wanted.pixels, QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(wanted.scale);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  drawLoupeFrame(painter, {0, 0, wanted.pixels.width() / wanted.scale, wanted.pixels.height() / wanted.scale},
                 wanted.appearance);
  painter.end();
  return SparsePicture(image);
}

}  // namespace velicor
