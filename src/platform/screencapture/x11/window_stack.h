#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "platform/base/geometry.h"

// The windows of a screen as a plain model, without a connection in it: what is fed to it is what it knows.
namespace velicor::screencapture {

using WindowId = std::uint32_t;

inline constexpr std::uint32_t fullyOpaque = 0xffffffff;
inline constexpr std::uint32_t everyDesktop = 0xffffffff;

// How a window is shown, as its manager and its program tell by properties.
struct Appearance {
  bool minimised = false;
  std::optional<std::uint32_t> desktop = std::nullopt;  // the virtual one it is on, where a manager keeps any
  std::uint32_t opacity = fullyOpaque;                  // of the whole window
  bool guard = false;  // named like a manager's guard: behind such a window others are kept mapped, not shown
  // Of a frame, relative to the inner corner of its border. A manager that composes its frames itself may
  // leave an invisible margin around them, and may leave it to itself to cut a shaped client out.
  std::optional<DeviceRect> clientPlace = std::nullopt;  // the client inside
  std::optional<DeviceRect> painted = std::nullopt;      // what the manager paints
  bool clientShaped = false;                             // the client is not the whole of its place
  // The largest rectangles, relative to the same corner, that lie in the window's shape and in what the
  // program says that it paints opaquely.
  std::optional<DeviceRect> insideShape = std::nullopt;
  std::optional<DeviceRect> opaque = std::nullopt;
};

// One child of the root window.
struct StackedWindow {
  WindowId id = 0;
  WindowId client = 0;       // the program's own window inside a manager's frame; 0: this is no frame
  DeviceRect bounds;         // on the root window, border included
  int border = 0;            // width of the border in pixels
  std::uint32_t visual = 0;  // how its pixels are laid out
  bool viewable = false;
  bool drawable = true;    // false: a window that only takes input
  bool alpha = false;      // its pixels carry alpha
  bool shaped = false;     // it is not the whole of its bounds
  bool unmanaged = false;  // window managers leave it alone
  Appearance shown;
  unsigned pixmapGeneration = 0;  // changes when its contents move to another pixmap
  unsigned shapeGeneration = 0;   // changes with its shape, and with its client's
};

// All children of the root window, bottom to top. Events may come late or twice, for windows already gone or
// not yet known: each only ever moves the model closer to what the server will say when asked. Where an event
// does not tell enough, needsQuery() asks the owner for the present list of children.
class WindowStack {
 public:
  // The server's list, bottom to top. Returns the windows that describe() or forget() must now be called for.
  std::vector<WindowId> reorder(std::span<const WindowId> bottomToTop);
  void describe(const StackedWindow& window);
  void forget(WindowId id);

  bool needsQuery() const { return needsQuery_; }

  // Events. Those that can change what is seen change the revision.
  void created();
  void destroyed(WindowId id);
  void mapped(WindowId id);
  void unmapped(WindowId id);
  void configured(WindowId id, const DeviceRect& bounds, int border, WindowId below);
  void circulated() { askAgain(); }
  void enteredRoot(WindowId id);
  void leftRoot(WindowId id);
  void shapeChanged(WindowId idOrClient, bool shaped);
  void clientFound(WindowId frame, WindowId client);
  void shownAs(WindowId id, const Appearance& appearance);

  // Of a manager that keeps the windows of all its desktops mapped; none: there is no such manager, and what
  // is mapped is to be seen.
  void currentDesktopIs(std::optional<std::uint32_t> desktop);

  // The contents of all windows have moved, or may have.
  void pixmapsMoved();

  const StackedWindow* find(WindowId id) const;

  // The entry whose program window this is, framed or not.
  const StackedWindow* findByClient(WindowId client) const;

  // Known windows, bottom to top.
  std::vector<const StackedWindow*> bottomToTop() const;

  // Those of them that can be seen where no other window is in front: mapped, and not kept back by a window
  // manager that leaves them mapped all the same.
  std::vector<const StackedWindow*> visibleBottomToTop() const;

  // Changes with everything that can change what is seen.
  unsigned revision() const { return revision_; }

 private:
  StackedWindow* known(WindowId id);
  WindowId neighbourBelow(WindowId id) const;
  bool isHidden(const StackedWindow& window) const;
  void askAgain();

  std::vector<WindowId> order_;
  std::map<WindowId, StackedWindow> windows_;
  std::map<WindowId, WindowId> clientsOfUnknown_;  // told before the frame was described
  std::optional<std::uint32_t> currentDesktop_;
  bool needsQuery_ = true;
  unsigned revision_ = 0;
  unsigned generations_ = 0;  // never reused: a window may come back under the identifier of one that went
};

}  // namespace velicor::screencapture
