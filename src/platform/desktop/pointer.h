#pragma once

#include <cstdint>

#include <QElapsedTimer>
#include <QTimer>

#include "platform/base/geometry.h"
#include "platform/notifications/signal.h"

class QMouseEvent;

namespace velicor::desktop {

class DisplayServer;
class MonitorScreens;
struct ServerEvent;
class WindowStack;

// Where the mouse is, whosever window it is over. Main thread.
class Pointer {
 public:
  Pointer(DisplayServer& server, const MonitorScreens& screens, const WindowStack& windows);

  // A round trip to the server.
  DesktopPoint position() const;

  // Where the mouse was when the toolkit's event happened, which may be a while ago.
  DesktopPoint positionOf(const QMouseEvent& event) const;

  // Whether a button is down at this moment, wheels apart; the toolkit's events may be behind. A round trip.
  bool isPressed() const;

  // When the user last moved the mouse, pressed a button or struck a key, as far as is known here, by the server's clock;
  // its present time while nothing is known.
  std::uint32_t time() const { return time_; }

  // Of an event that the toolkit got. Older ones than the last change nothing.
  void noteTime(std::uint32_t time);

  // Whose windows the mouse moves over.
  enum class Over { otherWindows, ownWindows };

  // The handler is called when the mouse has moved without a button held down, at most 60 times a second,
  // with a last call after the last motion. Never while the mouse stands still. Ends with the subscription,
  // which is inactive from the start on a server without XInput 2.1 (the log has said so).
  [[nodiscard]] Subscription observeMotion(Over over, std::function<void()> handler);

  // The handler is called when one of the buttons, wheels apart, goes down over other programs' windows,
  // which get the click all the same. Ends as above.
  [[nodiscard]] Subscription observePressesElsewhere(std::function<void()> handler);

  // Whether the server tells of the mouse at all, as it does at first. While it doesn't, nobody hears of
  // motion or presses, and the mouse costs nothing.
  void setWatching(bool watching);

 private:
  void handle(const ServerEvent& event);
  void handleMotion();
  void handlePress();
  void report();

  DisplayServer& server_;
  const MonitorScreens& screens_;
  const WindowStack& windows_;
  Subscription events_;
  Signal<> overOthers_;
  Signal<> overOwn_;
  Signal<> pressesElsewhere_;
  std::uint32_t time_ = 0;
  QTimer due_;
  QElapsedTimer sinceReport_;
};

}  // namespace velicor::desktop
