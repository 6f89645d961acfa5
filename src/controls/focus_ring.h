#pragma once

#include <vector>

#include <QPointer>
#include <QRectF>
#include <QWidget>

namespace velicor::controls {

class Control;

// The ring around the control that has the keyboard: 2 points wide, 2 points away from it. Lies over
// everything in the control's window, passes the mouse on, and follows the control wherever its window's
// layout and scrolling take it. Belongs to the window.
class FocusRing : public QWidget {
 public:
  explicit FocusRing(Control& control);

  static constexpr int distance = 2;
  static constexpr int width = 2;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void follow();

  Control& control_;
  QRectF outline_;  // of the control, in the ring's own points
};

}  // namespace velicor::controls
