#pragma once

#include <functional>

#include <QString>
#include <QWidget>

#include "controls/accessible.h"
#include "scopes/graticule.h"

namespace velicor {

// One scope: its live picture, where there is one, under its graticule, both clipped to continuous corners. Keeps its
// proportions: as wide as it is allowed to be. Main thread.
class ScopeView : public QWidget, public controls::Accessible {
 public:
  // Takes both over; `picture` may be none. `aspect` is the width by the height.
  ScopeView(double aspect, int width, QWidget* picture, Graticule* graticule);

  static constexpr double cornerRadius = 6;

  // What the picture shows, in a few words for those who don't see it; empty at first.
  void setReading(const QString& words);

  // Somebody asks for the words.
  std::function<void()> onAsked;

  QAccessible::Role accessibleRole() const override { return QAccessible::Graphic; }
  QString accessibleDescription() const override;

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  QString reading_;
};

}  // namespace velicor
