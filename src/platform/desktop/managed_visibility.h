#pragma once

#include <functional>

#include <QTimer>

#include "platform/desktop/stacking.h"
#include "platform/notifications/signal.h"

class QWidget;

namespace velicor::desktop {

class DisplayServer;

// How a window is on the screen.
enum class Standing {
  hidden,
  managed,  // where the window manager has it
  lifted,   // past the manager, above all that it manages
};

// Shows and hides a window that a window manager keeps, one step at a time: the next one only when the
// manager has said, in WM_STATE, that it is done with the last. A manager that is still busy with an earlier
// showing may otherwise put the window away for the hiding after it, when the last showing has already come
// to nothing because the window was there; the window is lost then, or its properties are. A step that the
// manager has not followed in time is repeated once. Where no manager is nothing waits. Main thread.
//
// The window is lifted past the manager from the start where there is none, or one that doesn't keep windows
// above others and below those of ours that bypass it.
class ManagedVisibility {
 public:
  // `apply` does it; between managed and lifted the window is hidden. The server and the window outlive this.
  ManagedVisibility(DisplayServer& server, QWidget& window, std::function<void(Standing)> apply);
  ManagedVisibility(const ManagedVisibility&) = delete;
  ManagedVisibility& operator=(const ManagedVisibility&) = delete;

  // At once, or as soon as the manager is ready. Only the last request counts.
  void request(bool shown);

  // What was requested last, and no window manager has minimised the window since.
  bool isShown() const { return wanted_ != Standing::hidden && !minimised_; }

  // Whether the manager has it on the screen, and nothing else is wanted.
  bool isKept() const;

  // Lifts the window that the manager keeps, until it is hidden.
  void lift();

  // Called when a manager has taken the window.
  std::function<void()> onTaken;

  // The window has been hidden, by whomever.
  void noteHidden();

 private:
  void step();
  void apply(Standing standing);
  void proceed();
  void losePatience();
  void repeat();
  bool hasManager();
  bool managerKeepsOrder();
  bool isWithdrawn();
  void followState();

  DisplayServer& server_;
  const WindowId window_;
  const std::function<void(Standing)> apply_;
  Standing wanted_ = Standing::hidden;
  Standing applied_ = Standing::hidden;
  bool repeated_ = false;  // what is applied
  bool applying_ = false;
  bool minimised_ = false;
  QTimer patience_;  // runs while the manager has not answered
  Subscription events_;
};

}  // namespace velicor::desktop
