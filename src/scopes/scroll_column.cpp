#include "scopes/scroll_column.h"

#include <utility>

#include <QApplication>
#include <QScrollBar>
#include <QTimer>
#include <QVBoxLayout>

namespace velicor {

namespace {

constexpr int focusMargin = 6;  // room for the ring around what has the keyboard
constexpr int wheelStep = 20;

}  // namespace

ScrollColumn::ScrollColumn(QWidget* parent) : QScrollArea(parent) {
  setFrameShape(QFrame::NoFrame);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFocusPolicy(Qt::NoFocus);
  setWidgetResizable(true);
  verticalScrollBar()->setSingleStep(wheelStep);
  auto* content = new QWidget;
  column_ = new QVBoxLayout(content);
  column_->setContentsMargins({});
  column_->setSpacing(0);
  setWidget(content);
  // Both would paint the style's ground.
  content->setAutoFillBackground(false);
  viewport()->setAutoFillBackground(false);
  connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
    if (now) wanted_.clear();
    followFocus(now);
  });
  // What has just grown is laid out later than the keyboard got there.
  connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, &ScrollColumn::followLayout);
  connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, &ScrollColumn::noteMoreBelow);
  connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &ScrollColumn::noteMoreBelow);
}

void ScrollColumn::bringIntoSight(QWidget& part) {
  wanted_ = &part;
  QTimer::singleShot(0, this, &ScrollColumn::followLayout);
}

void ScrollColumn::followLayout() {
  if (!wanted_) return followFocus(QApplication::focusWidget());
  if (wanted_->isVisible()) ensureWidgetVisible(wanted_, 0, 0);
}

void ScrollColumn::noteMoreBelow() {
  const bool isMore = verticalScrollBar()->value() < verticalScrollBar()->maximum();
  if (isMore == std::exchange(isMoreBelow_, isMore)) return;
  if (onMoreBelow) onMoreBelow(isMore);
}

void ScrollColumn::wheelEvent(QWheelEvent* event) {
  wanted_.clear();
  QScrollArea::wheelEvent(event);
}

void ScrollColumn::followFocus(QWidget* focused) {
  if (focused && widget()->isAncestorOf(focused)) ensureWidgetVisible(focused, 0, focusMargin);
}

bool ScrollColumn::scrollBy(int key) {
  QScrollBar* bar = verticalScrollBar();
  wanted_.clear();
  switch (key) {
    case Qt::Key_PageUp:
      bar->triggerAction(QAbstractSlider::SliderPageStepSub);
      return true;
    case Qt::Key_PageDown:
      bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
      return true;
    default:
      return false;
  }
}

}  // namespace velicor
