#pragma once

#include <cstdint>
#include <functional>

#include <QWidget>

#include "controls/accessible.h"
#include "platform/notifications/signal.h"

class QKeyEvent;

namespace velicor {

// Asks for a key combination and shows the current one, HotKey::shared(). While it has the keyboard every key
// press is its own, those of the program's commands and of the keyboard's ways through a window too. Main
// thread.
class RecorderView : public QWidget, public controls::Accessible {
 public:
  explicit RecorderView(QWidget* parent = nullptr);

  // A combination with at least two modifiers was pressed: its key code and mask as in HotKey.
  std::function<void(std::uint32_t keyCode, std::uint32_t modifiers)> onCapture;

  // Esc was pressed, with whatever modifiers.
  std::function<void()> onReset;

  // Handles one key press. Beeps where it can't be a shortcut. May destroy the view, through a closure.
  void keyDown(const QKeyEvent& event);

  QAccessible::Role accessibleRole() const override { return QAccessible::HotkeyField; }
  QString accessibleText() const override;

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  Subscription displayChanges_;
};

}  // namespace velicor
