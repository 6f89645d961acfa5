#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QObject>
#include <QPointer>
#include <QWidget>

#include "platform/notifications/signal.h"

namespace velicor::desktop {
class Desktop;
class Panel;
}  // namespace velicor::desktop

namespace velicor::controls {

class PopoverGround;

// A small window of ours that points with an arrow at a widget of another window. Takes the keyboard while it
// is shown and gives it back; Tab stays inside; Return presses the default button. A click anywhere outside,
// Esc, and the anchor's going out of sight dismiss it: it hides and says so. Its window bypasses the window
// manager, at level 5. Main thread.
class Popover : public QObject {
 public:
  // Not shown. The anchor may go first; the desktop may not.
  Popover(desktop::Desktop& desktop, QWidget& anchor, std::unique_ptr<QWidget> content);
  ~Popover() override;

  static constexpr int level = 5;

  // After it was dismissed by other means than hide(). Must not destroy the popover.
  std::function<void()> onDismiss;

  // At the anchor as it is now. The keyboard goes to the content's first control, for the reason given.
  void show(Qt::FocusReason reason);
  void hide();
  bool isShown() const;

  desktop::Panel& panel() const;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  class Window;

  void dismiss();
  void place();
  void activate();
  void followAnchor();
  bool isAnchor(const QWidget& widget) const;

  desktop::Desktop& desktop_;
  const QPointer<QWidget> anchor_;
  std::unique_ptr<Window> panel_;
  PopoverGround* ground_ = nullptr;  // the panel's
  std::vector<Subscription> whileShown_;
};

}  // namespace velicor::controls
