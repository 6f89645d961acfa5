#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "platform/desktop/stacking.h"
#include "platform/notifications/signal.h"

namespace velicor::desktop {

class DisplayServer;
struct ServerEvent;

// The stack of top-level windows as the server has it, kept up to date by its events. Also keeps our
// bypassing windows in their place. Main thread.
class WindowStack {
 public:
  explicit WindowStack(DisplayServer& server);

  // The windows that are on the screen.
  const Stack& windows() const { return stack_; }

  // Whether nothing of our window can be seen for other programs' windows above it. `window` is the toolkit's
  // identifier; a frame around it is taken into account.
  bool isCovered(WindowId window) const;

  // Whether no other program's window stands above any part of ours. `window` as above.
  bool isInFront(WindowId window) const;

  // Whether a window manager has put another program's window above the whole of ours, or ours away. `window`
  // as above.
  bool isOvertopped(WindowId window) const;

  // Whether a child of the root window is ours, or the frame around a window of ours.
  bool isOwn(WindowId topLevel) const;

  // Looks again, on the next turn of the event loop. For changes that no event tells, such as a level.
  void refreshSoon();

  // After windows() has changed.
  Signal<> changed;

 private:
  // What the server says about a child of the root window. Kept while the window exists.
  struct Facts {
    DeviceRect rect;
    bool viewable = false;
    bool inputOnly = false;
    bool overrideRedirect = false;
    bool seeThrough = false;
  };

  void handle(const ServerEvent& event);
  void handleConfigure(const ServerEvent& event);
  void refresh();
  void readTree();
  void readFacts(const std::vector<WindowId>& windows);
  void readClients();
  WindowId topLevelOf(WindowId window);
  WindowId knownTopLevelOf(WindowId window) const;
  Stack compose();
  void restack();

  DisplayServer& server_;
  Subscription events_;
  std::vector<WindowId> order_;  // children of the root window, from the bottom to the top
  std::map<WindowId, Facts> facts_;
  std::map<WindowId, WindowId> topLevels_;  // of each managed client and each window of ours
  std::vector<WindowId> clients_;
  std::set<WindowId> frames_;  // children of the root window that got a window of a client put into them
  Stack stack_;
  bool treeDirty_ = true;
  bool clientsDirty_ = true;
  std::shared_ptr<bool> pending_;  // a refresh that waits for its turn
};

}  // namespace velicor::desktop
