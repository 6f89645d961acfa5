#pragma once

#include <QWidget>

#include "scopes/graticule.h"

namespace velicor {

// One scope: its live picture, where there is one, under its graticule, both clipped to continuous corners. Keeps its
// proportions: as wide as it is allowed to be. Main thread.
class ScopeView : public QWidget {
 public:
  // Takes both over; `picture` may be none. `aspect` is the width by the height.
  ScopeView(double aspect, int width, QWidget* picture, Graticule* graticule);

  static constexpr double cornerRadius = 6;

 protected:
  void resizeEvent(QResizeEvent* event) override;
};

}  // namespace velicor
