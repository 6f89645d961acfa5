#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/base/geometry.h"
#include "platform/desktop/cursor.h"
#include "platform/desktop/stacking.h"
#include "platform/notifications/signal.h"

class QWidget;

namespace velicor::desktop {

class Desktop;
class ManagedVisibility;
class Panel;
enum class Standing;

// Hears that a panel has a new frame, whoever gave it, and that the user wants to close it.
class PanelDelegate {
 public:
  virtual ~PanelDelegate() = default;
  virtual void windowDidMove(Panel&) {}
  virtual void windowDidResize(Panel&) {}

  // Whether the panel is ordered out now.
  virtual bool windowShouldClose(Panel&) { return true; }
};

// How a panel meets the window manager.
enum class PanelKind {
  bypassing,  // not at all: exact frames at once, on all desktops, above full-screen windows
  managed,    // an undecorated window that the manager keeps above and on all desktops, of one size; it
              // bypasses the manager as well where that does not keep it in sight, such as behind a
              // full-screen window
};

// A borderless window of ours with an alpha channel, placed in desktop points. Never activates the program by
// being shown. Main thread.
class Panel {
 public:
  Panel(Desktop& desktop, PanelKind kind, const DesktopRect& frame);
  virtual ~Panel();
  Panel(const Panel&) = delete;
  Panel& operator=(const Panel&) = delete;

  // The panel whose window a widget is in, or none.
  static Panel* of(const QWidget* widget);

  // In points, fractions included. The window's edges are at the nearest device pixels.
  const DesktopRect& frame() const { return frame_; }
  virtual void setFrame(DesktopRect frame);

  // Where the window is, in pixels of the root window.
  const DeviceRect& deviceFrame() const { return deviceFrame_; }

  // Our windows of higher levels stay above those of lower ones.
  int level() const;
  void setLevel(int level);

  // Above the windows of its kind, whatever program is active. A window manager that has not finished with a managed
  // panel's last coming or going delays this one; isVisible() tells what was asked for.
  void orderFront();
  void orderOut();
  bool isVisible() const;

  // Whether nothing of it can be seen for other programs' opaque windows.
  bool isOccluded() const;

  // Clicks and motion go to what lies below. Holds while the panel is hidden and shown.
  bool ignoresMouseEvents() const { return ignoresMouse_; }
  void setIgnoresMouseEvents(bool ignores);

  // The left mouse button moves the panel by any part of it that has no use for the mouse: through the window
  // manager where it offers that.
  void setMovableByBackground(bool movable);

  // What a window manager's list of windows calls it.
  void setTitle(const std::string& title);

  // Borderless windows take no keys unless they say so.
  virtual bool canBecomeKey() const { return false; }

  // Whether the keyboard is directed at this panel.
  bool isKey() const { return key_; }

  // Takes the keyboard, where it can and the panel is visible. A bypassing panel remembers who had it, and
  // gives it back when it resigns or is ordered out; to whatever the pointer is in where nobody had it or who
  // had it can't have it any more.
  void makeKey();
  void resignKey();

  // As makeKey(), also where something has been done about the keyboard since the user last touched a device that we
  // know of: for a command that comes from elsewhere.
  void insistOnKey();

  // Shown while the mouse is over the panel.
  void setCursor(Cursor cursor);
  Cursor cursor() const { return cursor_; }

  // Not owned; none to hear nothing.
  void setDelegate(PanelDelegate* delegate) { delegate_ = delegate; }

  // Takes over a widget that always fills the panel.
  void setContentView(std::unique_ptr<QWidget> view);
  QWidget& window() const;
  Desktop& desktop() const { return desktop_; }
  PanelKind kind() const { return kind_; }

  // Whether no window manager has a hand in it at present.
  bool isBypassing() const { return kind_ == PanelKind::bypassing || lifted_; }

 private:
  class Carrier;
  friend class Carrier;

  void applyFrame();
  void apply(Standing standing);
  void hide();
  void stand(bool lifted);
  void keepInSight();
  void takeKeyboard(std::uint32_t time);
  void becameShown();
  void movedByOthers();
  void followScreens();
  void measureAnew();
  void settle();
  void noteFrame(const DesktopRect& before);

  Desktop& desktop_;
  const PanelKind kind_;
  std::unique_ptr<Carrier> carrier_;
  PanelDelegate* delegate_ = nullptr;
  DesktopRect frame_;
  DeviceRect deviceFrame_;
  Cursor cursor_ = Cursor::arrow;
  bool ignoresMouse_ = false;
  bool key_ = false;
  WindowId keyBefore_ = 0;
  bool keyWhenShown_ = false;
  bool lifted_ = false;
  std::unique_ptr<ManagedVisibility> visibility_;  // of a managed panel
  Subscription screensChanged_;
  Subscription windowsChanged_;
  Subscription pressesElsewhere_;  // while it is lifted
};

}  // namespace velicor::desktop
