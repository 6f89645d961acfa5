#pragma once

#include <QWidget>

#include "platform/notifications/signal.h"

namespace velicor::desktop {

class Desktop;

// The dark ground of a panel, which it fills. While a compositing manager runs it has round corners, and the
// desktop shines through a little, blurred where the manager does that; without one it is a solid rectangle.
// A quiet line runs along its edge. Main thread.
class PanelGround : public QWidget {
 public:
  explicit PanelGround(Desktop& desktop, QWidget* parent = nullptr);

  // What of the ground is covered by it while the desktop shines through, 0…1.
  static constexpr double translucentAlpha = 0.92;
  static constexpr double cornerRadius = 10;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void applyBlur();

  Desktop& desktop_;
  Subscription compositorChanged_;
};

}  // namespace velicor::desktop
