#pragma once

#include <functional>

#include <QObject>

class QWidget;

// The program as a whole, and its windows besides the panels. Main thread.
namespace velicor::desktop {

class Desktop;

// Ends the event loop on its next turn. No window is asked and none can refuse.
void terminate();

// The sound of a refusal, whatever the user has for one.
void beep();

// The level of any top-level window of ours; see Panel::setLevel.
void setWindowLevel(Desktop& desktop, QWidget& window, int level);

// Tells of the windows that come to the user's hand: each one that gets the keyboard, and each menu, popover and
// tooltip when it appears, which never get it by themselves.
class WindowObserver : public QObject {
 public:
  using Handler = std::function<void(QWidget& window)>;

  // The handler is called as long as the observer lives.
  explicit WindowObserver(Handler handler);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  const Handler handler_;
};

}  // namespace velicor::desktop
