#include "controls/popover_ground.h"

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

namespace {

// For the line along the arrow, where the window is cut to its shape.
constexpr double edgeRoom = 0.5;

}  // namespace

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

QPainterPath PopoverGround::shape(const QRectF& body, double radius, double grown) const {
  const double base = arrowOnTop_ ? body.top() : body.bottom();
  const double up = arrowOnTop_ ? -1 : 1;
  const double half = arrowWidth / 2.0 + grown;
  QPainterPath arrow;
  // Reaching into the body, so that the two become one.
  arrow.addPolygon(QPolygonF({{tip_ - half - 1, base - up},
                              {tip_, base + up * (arrowHeight - 1 + grown)},
                              {tip_ + half + 1, base - up}}));
  arrow.closeSubpath();
  return desktop::continuousCorners(body, radius).united(arrow);
}

void PopoverGround::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const bool composed = desktop_.compositor().isPresent();
  const double line = pixelWidth(painter, 1);
  const double inset = line / 2;
  const QPainterPath path = shape(pixelAligned(painter, body()).adjusted(inset, inset, -inset, -inset),
                                  composed ? cornerRadius : 0);
  // What is cut out is a little larger than what is drawn, and black where nothing is.
  if (!composed) painter.fillRect(rect(), look::panelGround);
  painter.fillPath(path, look::panelGround);
  painter.strokePath(path, QPen(look::popoverEdge, line));
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

// A window without alpha is cut out of the screen instead.
void PopoverGround::fitWindow() {
  if (!isVisible()) return;
  if (desktop_.compositor().isPresent()) return window()->clearMask();
  window()->setMask(QRegion(shape(body(), 0, edgeRoom).toFillPolygon().toPolygon()));
}

}  // namespace velicor::controls
