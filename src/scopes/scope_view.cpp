#include "scopes/scope_view.h"

#include "platform/base/geometry.h"

namespace velicor {

ScopeView::ScopeView(double aspect, int width, QWidget* picture, Graticule* graticule) {
  setFixedSize(width, roundHalfAway(width / aspect));
  if (picture) picture->setParent(this);
  graticule->setParent(this);
  graticule->setCornerRadius(cornerRadius);
}

void ScopeView::setReading(const QString& words) {
  if (words == reading_) return;
  reading_ = words;
  controls::announceDescription(*this);
}

QString ScopeView::accessibleDescription() const {
  if (onAsked) onAsked();
  return reading_;
}

void ScopeView::resizeEvent(QResizeEvent*) {
  for (QWidget* layer : findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) layer->setGeometry(rect());
}

}  // namespace velicor
