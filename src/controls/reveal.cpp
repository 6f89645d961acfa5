#include "controls/reveal.h"

#include <cmath>

#include <QEvent>

namespace velicor::controls {

Reveal::Reveal(QWidget* content, bool expanded, QWidget* parent)
    : QWidget(parent), content_(content), motion_(expanded ? 1 : 0, [this] { apply(); }) {
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  content_->setParent(this);
  apply();
}

void Reveal::setExpanded(bool expanded) {
  isVisible() ? motion_.moveTo(expanded ? 1 : 0) : motion_.jumpTo(expanded ? 1 : 0);
}

void Reveal::apply() {
  content_->setVisible(motion_.value() > 0);
  updateGeometry();
}

QSize Reveal::sizeHint() const {
  const QSize full = content_->sizeHint();
  return {full.width(), static_cast<int>(std::lround(full.height() * motion_.value()))};
}

QSize Reveal::minimumSizeHint() const { return {content_->minimumSizeHint().width(), sizeHint().height()}; }

// The content keeps its full height under the edge that moves over it.
void Reveal::place() { content_->setGeometry(0, 0, width(), content_->sizeHint().height()); }

void Reveal::resizeEvent(QResizeEvent*) { place(); }

bool Reveal::event(QEvent* event) {
  if (event->type() == QEvent::LayoutRequest) {
    place();
    updateGeometry();
  }
  return QWidget::event(event);
}

}  // namespace velicor::controls
