#pragma once

#include <functional>
#include <memory>

#include <QPainterPath>
#include <QWidget>

#include "platform/notifications/signal.h"

namespace velicor::desktop {
class Desktop;
}

namespace velicor::controls {

// What fills a popover's window: dark ground with an arrow on its top or bottom edge, and the content on it.
// Opaque: it mostly lies over a panel of ours, and colours are judged on it. Under a compositing manager with
// round corners, else square and cut to its shape. Main thread.
class PopoverGround : public QWidget {
 public:
  PopoverGround(desktop::Desktop& desktop, std::unique_ptr<QWidget> content);

  static constexpr int arrowHeight = 8;
  static constexpr int arrowWidth = 18;
  static constexpr double cornerRadius = 8;

  // How near to the window's sides the arrow's tip may come.
  static constexpr double shoulder = cornerRadius * 1.5 + arrowWidth / 2.0;

  std::function<void()> onEscape;

  // Where the arrow is: on the top edge or the bottom one, its tip that far from the left.
  void setArrow(bool onTop, double tip);

  // Gives the keyboard to the first control that Tab would reach.
  void focusFirst(Qt::FocusReason reason);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  QRectF body() const;
  QPainterPath arrow(const QRectF& body) const;
  QRegion cut() const;
  void fitWindow();

  desktop::Desktop& desktop_;
  QWidget* const content_;
  bool arrowOnTop_ = true;
  double tip_ = shoulder;
  Subscription compositorChanged_;
};

}  // namespace velicor::controls
