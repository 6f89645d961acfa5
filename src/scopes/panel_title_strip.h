#pragma once

#include <functional>

#include <QPoint>
#include <QWidget>

namespace velicor {

namespace controls {
class PlainButton;
}

// The strip along the top of a panel without a window frame: a close button at its left end and, once there is a
// menu, a button for it at the right. Elsewhere the mouse passes it by. Main thread.
class PanelTitleStrip : public QWidget {
 public:
  explicit PanelTitleStrip(QWidget* parent = nullptr);

  static constexpr int height = 22;

  std::function<void()> onClose;

  // Opens a menu whose top-right corner goes to that place of the screen. The button shows while this is set.
  void setMenu(std::function<void(QPoint corner)> open);

  controls::PlainButton& closeButton() const { return *close_; }
  controls::PlainButton& menuButton() const { return *menu_; }

 private:
  std::function<void(QPoint corner)> openMenu_;
  controls::PlainButton* close_;
  controls::PlainButton* menu_;
};

}  // namespace velicor
