#include "controls/popover_ground.h"

#include <QBitmap>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

#include "controls/drawing.h"
#include "controls/push_button.h"
#include "platform/desktop/compositor.h"
#include "platform/desktop/continuous_corners.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/look.h"

namespace velicor::controls {

PopoverGround::PopoverGround(desktop::Desktop& desktop, std::unique_ptr<QWidget> content)
    : desktop_(desktop), content_(content.release()) {
  setFocusPolicy(Qt::ClickFocus);
  auto* layout = new QVBoxLayout(this);
  layout->setSpacing(0);
  layout->setContentsMargins(0, arrowHeight, 0, 0);
  layout->addWidget(content_);
  compositorChanged_ = desktop_.compositor().changed.subscribe([this] {
    fitWindow();
    update();
  });
}

void PopoverGround::setArrow(bool onTop, double tip) {
  arrowOnTop_ = onTop;
  tip_ = tip;
  layout()->setContentsMargins(0, onTop ? arrowHeight : 0, 0, onTop ? 0 : arrowHeight);
  fitWindow();
  update();
}

void PopoverGround::focusFirst(Qt::FocusReason reason) {
  for (QWidget* next = nextInFocusChain(); next != this; next = next->nextInFocusChain()) {
    if (!isAncestorOf(next) || !next->isVisible() || !next->isEnabled()) continue;
    if ((next->focusPolicy() & Qt::TabFocus) != 0) return next->setFocus(reason);
  }
  setFocus(reason);
}

QRectF PopoverGround::body() const {
  return QRectF(rect()).adjusted(0, arrowOnTop_ ? arrowHeight : 0, 0, arrowOnTop_ ? 0 : -arrowHeight);
}

// Reaches into the body, so that the two become one.
QPainterPath PopoverGround::arrow(const QRectF& body) const {
  const double base = arrowOnTop_ ? body.top() : body.bottom();
  const double up = arrowOnTop_ ? -1 : 1;
  const double half = arrowWidth / 2.0 + 1;
  QPainterPath path;
  path.addPolygon(
      QPolygonF({{tip_ - half, base - up}, {tip_, base + up * (arrowHeight - 1)}, {tip_ + half, base - up}}));
  path.closeSubpath();
  return path;
}

// A window without alpha is cut out of the screen instead: to the pixels that the arrow touches.
QRegion PopoverGround::cut() const {
  QBitmap touched(size());
  touched.clear();
  QPainter painter(&touched);
  painter.setPen(QPen(Qt::color1, 1));
  painter.setBrush(Qt::color1);
  painter.drawPath(arrow(body()));
  painter.fillRect(body(), Qt::color1);
  painter.end();
  return QRegion(touched);
}

void PopoverGround::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const bool composed = desktop_.compositor().isPresent();
  const double radius = composed ? cornerRadius : 0;
  const QRectF whole = pixelAligned(painter, body());
  const double line = pixelWidth(painter, 1);
  const double inset = line / 2;
  const QRectF edge = whole.adjusted(inset, inset, -inset, -inset);
  // Where nothing is drawn, a window without alpha is black.
  if (!composed) painter.fillRect(rect(), look::panelGround);
  painter.fillPath(desktop::continuousCorners(whole, radius).united(arrow(edge)), look::panelGround);
  painter.strokePath(desktop::continuousCorners(edge, radius).united(arrow(edge)),
                     QPen(look::popoverEdge, line));
}

void PopoverGround::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Escape:
      if (onEscape) onEscape();
      return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (!event->isAutoRepeat()) PushButton::clickDefault(*window());
      return;
    default:
      QWidget::keyPressEvent(event);
  }
}

void PopoverGround::resizeEvent(QResizeEvent*) { fitWindow(); }

void PopoverGround::showEvent(QShowEvent*) { fitWindow(); }

void PopoverGround::fitWindow() {
  if (!isVisible()) return;
  desktop_.compositor().isPresent() ? window()->clearMask() : window()->setMask(cut());
}

}  // namespace velicor::controls
