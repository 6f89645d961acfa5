#include "controls/focus_ring.h"

#include <QAbstractScrollArea>
#include <QEvent>
#include <QPainter>

#include "controls/control.h"
#include "controls/drawing.h"
#include "platform/desktop/look.h"

namespace velicor::controls {

namespace {

constexpr int reach = FocusRing::distance + FocusRing::width;

// What a scroll area leaves to be seen of its content. The ring may stick out sideways, where nothing scrolls.
QRect seenThrough(const QWidget& viewport, const QWidget& window) {
  const QRect rect(viewport.mapTo(&window, QPoint(0, 0)), viewport.size());
  return rect.adjusted(-reach, 0, reach, 0);
}

bool isViewport(const QWidget& widget) {
  const auto* area = qobject_cast<const QAbstractScrollArea*>(widget.parentWidget());
  return area && area->viewport() == &widget;
}

}  // namespace

FocusRing::FocusRing(Control& control) : QWidget(control.window()), control_(control) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
  for (QWidget* widget = &control; widget && widget != control.window(); widget = widget->parentWidget())
    widget->installEventFilter(this);
  follow();
}

bool FocusRing::eventFilter(QObject*, QEvent* event) {
  const QEvent::Type type = event->type();
  if (type == QEvent::Move || type == QEvent::Resize || type == QEvent::Show || type == QEvent::Hide) follow();
  return false;
}

void FocusRing::follow() {
  const QWidget* window = parentWidget();
  const QRectF outline = control_.outline().translated(control_.mapTo(window, QPoint(0, 0)));
  QRect seen = outline.toAlignedRect().adjusted(-reach, -reach, reach, reach);
  for (const QWidget* widget = &control_; widget != window; widget = widget->parentWidget()) {
    if (isViewport(*widget)) seen &= seenThrough(*widget, *window);
  }
  setVisible(control_.isVisible() && !seen.isEmpty());
  setGeometry(seen);
  outline_ = outline.translated(-seen.topLeft());
  raise();
  update();
}

void FocusRing::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF outer = pixelAligned(painter, outline_.adjusted(-reach, -reach, reach, reach));
  painter.fillPath(continuousBorder(outer, control_.outlineRadius() + reach, pixelWidth(painter, width)),
                   look::focusRing);
}

}  // namespace velicor::controls
