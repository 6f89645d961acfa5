#pragma once

class QWidget;

namespace velicor::controls {

// A layout without margins, its items this far apart; the widget's own, or to be put into another where there
// is none.
template <typename Layout>
Layout* plainLayout(QWidget* widget, int spacing = 0) {
  auto* layout = new Layout(widget);
  layout->setContentsMargins({});
  layout->setSpacing(spacing);
  return layout;
}

}  // namespace velicor::controls
