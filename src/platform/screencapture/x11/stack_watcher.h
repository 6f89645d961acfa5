#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

#include "platform/screencapture/x11/scene_plan.h"
#include "platform/screencapture/x11/visual_formats.h"
#include "platform/screencapture/x11/window_stack.h"
#include "platform/x11/connection.h"

namespace velicor::screencapture {

// Keeps a WindowStack, the backdrop and the compositing manager's presence in step with the server. Used on
// the capture thread only.
class StackWatcher {
 public:
  // Asks for all events before anything is read, so that no change falls in between. `formats` outlives it.
  StackWatcher(x11::Connection& connection, const VisualFormats& formats);

  // Takes note of an event. True when what is seen may have changed.
  bool take(const xcb_generic_event_t& event);

  // Whether refresh() has something to ask the server.
  bool isOutdated() const;

  // Whether so much is left to ask that refresh() would take long. It grows with every window that is managed
  // anew, also while nobody wants to know.
  bool isOverdue() const;

  // Asks what the events did not tell. Replies take in further events: take them all and look again.
  void refresh();

  const WindowStack& stack() const { return stack_; }
  const Background& background() const { return background_; }
  bool isComposited() const { return compositorWindow_ != 0; }

 private:
  struct Reparented {
    WindowId window;
    WindowId parent;
  };

  bool takeConfigure(const xcb_configure_notify_event_t& event);
  void takeReparent(const xcb_reparent_notify_event_t& event);
  void takeProperty(const xcb_property_notify_event_t& event);
  bool takeExtensionEvent(const xcb_generic_event_t& event);

  void readStack();
  void describe(const std::vector<WindowId>& ids);
  void leaveOut(StackedWindow& window);
  void readReparented();
  bool isTrayPart(WindowId window, WindowId tray) const;
  WindowId frameAround(WindowId window);
  void setClient(WindowId frame, WindowId client);
  void readAppearances();
  void readRoot();
  void readCompositor();
  bool isBackdrop(std::optional<std::uint32_t> pixmap);
  void followDesktops();

  x11::Connection& connection_;
  const VisualFormats& formats_;
  WindowStack stack_;
  Background background_;
  WindowId managerWindow_ = 0;     // the window manager's own; 0: it names none
  WindowId compositorWindow_ = 0;  // the compositing manager's own; 0: there is none
  std::optional<std::uint32_t> currentDesktop_;
  bool rootOutdated_ = true;
  bool compositorOutdated_ = true;
  std::set<WindowId> appearanceOutdated_;
  std::vector<Reparented> reparented_;
  std::set<std::uint32_t> undecodable_;  // visuals that the log has
};

}  // namespace velicor::screencapture
