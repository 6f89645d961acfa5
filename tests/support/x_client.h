#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <xcb/xcb.h>

#include "platform/base/geometry.h"
#include "platform/x11/own_clients.h"

namespace velicor::test {

// A picture that is known at every pixel: colours by position and a number that tells windows apart. Never
// magenta, which is the mark of our own windows.
struct Pattern {
  int seed = 0;

  // 0xRRGGBB at a position relative to the window's inner corner. Repeats every 256 pixels.
  std::uint32_t at(int x, int y) const;
};

inline constexpr std::uint32_t magenta = 0xff00ff;

// Another program on the display: a connection that knows nothing of our code, and windows that show patterns
// or plain colours without having to repaint.
class XClient {
 public:
  explicit XClient(const std::string& display);
  ~XClient();
  XClient(const XClient&) = delete;
  XClient& operator=(const XClient&) = delete;

  // As if it were part of our process, until the client goes.
  void joinOwn(velicor::x11::OwnClients& own);

  struct Look {
    bool managed = false;  // false: the window manager leaves it alone
    int border = 0;
    std::uint32_t borderColour = 0;
    bool alpha = false;  // a 32-bit visual
  };

  // Unmapped. The position is the outer corner's.
  xcb_window_t makeWindow(const DeviceRect& place, Look look);
  xcb_window_t makeWindow(const DeviceRect& place) { return makeWindow(place, Look{}); }

  // Mapped, and the server has done it; managed windows have their frame.
  xcb_window_t showPattern(const DeviceRect& place, Pattern pattern, Look look);
  xcb_window_t showPattern(const DeviceRect& place, Pattern pattern) {
    return showPattern(place, pattern, Look{});
  }
  xcb_window_t showColour(const DeviceRect& place, std::uint32_t colour);

  void setPattern(xcb_window_t window, Pattern pattern);
  void setColour(xcb_window_t window, std::uint32_t pixel);
  void fill(xcb_window_t window, const DeviceRect& rect, std::uint32_t pixel);
  void map(xcb_window_t window);
  void unmap(xcb_window_t window);
  void destroy(xcb_window_t window);
  void move(xcb_window_t window, int x, int y);
  void resize(xcb_window_t window, int width, int height);
  void raise(xcb_window_t window);
  void lower(xcb_window_t window);
  void setNumber(xcb_window_t window, std::string_view property, std::uint32_t value);
  void setNumbers(xcb_window_t window, std::string_view property, const std::vector<std::uint32_t>& values);
  void setTitle(xcb_window_t window, std::string_view title);
  void clear(xcb_window_t window, std::string_view property);
  void shape(xcb_window_t window, const DeviceRect& only);

  // Does what a window manager does: puts the client, at a corner, into a mapped frame of one colour, and
  // says that it is a client.
  xcb_window_t frame(xcb_window_t client, const DeviceRect& place, DevicePoint corner, std::uint32_t colour);

  // Becomes what programs take for the compositing manager, without composing anything; until the client goes
  // or releases it.
  void takeSelection(std::string_view selection);
  void releaseSelection(std::string_view selection);

  // What the screen shows; 0xRRGGBB, row by row.
  std::vector<std::uint32_t> screenImage(const DeviceRect& rect) const;

  // Where the window's inner corner is on the root window.
  DevicePoint origin(xcb_window_t window);

  // Asks the window manager for a desktop, and waits until that is the current one.
  void goToDesktop(std::uint32_t desktop) const;

  // Has the panel that owns the tray take the window as an icon, and waits until it has.
  void dock(xcb_window_t icon) const;

  // A pixmap of the pattern, as the root window's backdrop.
  void setBackdrop(Pattern pattern);

  // A primary monitor takes over the server's only output, whose own monitor is gone while it has it; others need
  // none.
  void defineMonitor(std::string_view name, const DeviceRect& rect, bool primary);
  void deleteMonitor(std::string_view name);

  // What the server keeps for the clients that are meant, told by their resource base: how many of each kind,
  // and the bytes of their pixmaps.
  std::map<std::string, unsigned> resources(const std::function<bool(std::uint32_t base)>& meant) const;

  // The same for the connections of a process.
  std::map<std::string, unsigned> resourcesOf(std::uint32_t process) const;

  // The server has done all that was asked.
  void sync() const;

  // Whether a window manager answers. One that is just starting may leave the first request lying until it
  // gets another, so this one asks more than once.
  bool findManager();

  // Whether the window manager has put the window into a state.
  bool isManaged(xcb_window_t window) const;

  bool waitForProperty(std::string_view rootProperty) const;
  bool waitForSelectionOwner(std::string_view selection, bool present) const;

  xcb_connection_t* raw() const { return connection_; }
  xcb_window_t root() const { return screen_->root; }
  const xcb_screen_t& screen() const { return *screen_; }
  xcb_atom_t atom(std::string_view name) const;

 private:
  std::uint32_t alphaVisual();
  xcb_pixmap_t patternPixmap(Pattern pattern);
  std::uint32_t pixelOf(std::uint32_t colour) const;
  void stack(xcb_window_t window, std::uint32_t mode);
  void tell(xcb_window_t window, std::uint32_t mask, std::string_view what,
            const std::array<std::uint32_t, 3>& values) const;

  xcb_connection_t* connection_;
  xcb_screen_t* screen_;
  xcb_colormap_t alphaColours_ = 0;
  std::uint32_t alphaVisual_ = 0;
  velicor::x11::OwnClients* own_ = nullptr;
};

}  // namespace velicor::test
