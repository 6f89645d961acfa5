#include "scopes/scope_view.h"

#include "platform/base/geometry.h"

namespace velicor {

ScopeView::ScopeView(double aspect, int width, QWidget* picture, Graticule* graticule) {
  setFixedSize(width, roundHalfAway(width / aspect));
  if (picture) picture->setParent(this);
  graticule->setParent(this);
  graticule->setCornerRadius(cornerRadius);
}

void ScopeView::resizeEvent(QResizeEvent*) {
  for (QWidget* layer : findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) layer->setGeometry(rect());
}

}  // namespace velicor
