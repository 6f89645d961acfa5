#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/base/geometry.h"
#include "platform/desktop/stacking.h"

class QPointF;
class QRegion;
class QScreen;
class QWidget;

// Requests about windows that the toolkit made. They go out on the toolkit's own connection, so that the
// server sees them in one order with the toolkit's requests; errors (a window that has gone) are dropped.
// Main thread.
namespace velicor::desktop::toolkit {

// Makes the toolkit's connection known as one of this process's, before its first window.
void joinOwnClients();

// Identifies a top-level widget to the server; makes its window if need be. 0 without an X server.
WindowId identifierOf(QWidget& window);

// Exact device pixels, where the toolkit itself knows whole points only.
void configure(WindowId window, const DeviceRect& rect);

// The same where its corner stays, whatever frame a window manager has put it in.
void resize(WindowId window, int width, int height);

// Where the window really is. A round trip; none when the window has gone.
std::optional<DeviceRect> geometryOf(WindowId window);

// Whether a window is on the screen, seen or covered. A round trip.
bool isViewable(WindowId window);

// Whether a window manager may place it: it is no menu, popover or tooltip, and none that bypasses the manager.
bool isManaged(const QWidget& window);

// Puts a window on the screen that the toolkit thinks is there, as one that was minimised.
void map(WindowId window);

// Takes a window off the screen, and tells the window manager in so many words.
void withdraw(WindowId window);

// Out of a frame that a window manager has left it in. A round trip.
void returnToRoot(WindowId window);

// Whether the pointer passes the window by. To be set again after every map: whether it lasts is up to the
// window manager and the toolkit.
void setClickThrough(WindowId window, bool on);

// The toolkit's screen that shows this pixel, or none.
QScreen* screenAt(DevicePoint pixel);

// The pixel of the root window at a place on the toolkit's own desktop.
DevicePoint devicePoint(const QPointF& global);

// Which window has the keyboard. A round trip.
WindowId focusedWindow();

// The server takes no notice where the keyboard has been directed somewhere at a later time than this, its own one; so
// that what comes late does not undo what the user or the window manager has done meanwhile.
void focus(WindowId window, std::uint32_t time);

// To this window, or to whichever the pointer is in where it can't have it: it has gone, is not to be seen or
// never was one. A round trip.
void focusIfViewable(WindowId window, std::uint32_t time);

// Asks compositing managers to draw no shadow.
void removeShadow(WindowId window);

// Asks compositing managers to blur what shines through these parts of the window, in device pixels from its
// top-left corner; none to blur nothing.
void setBlurBehind(WindowId window, const QRegion& parts);

// Asks the window manager to show the window on every desktop. To be set again before every map: it forgets.
// Once more when it has taken the window: some heed only what is asked of them then.
void joinAllDesktops(WindowId window);

// Whether the window bypasses the window manager from its next map on, whatever the toolkit's flags say.
// Between two maps, once the manager has let go of it.
void setBypassing(QWidget& window, bool bypassing);

// Tells the window manager that the window has this one size. To be set again after every map.
void fixSize(WindowId window, const DeviceRect& rect);

// Whether the taskbar has an entry for a window that the manager knows; pagers never have. To be said again
// before every map: the manager forgets.
void setInTaskbar(QWidget& window, bool listed);

// For a hidden window: what it showed last leaves the toolkit's memory. It is painted anew when it is shown.
void forgetPicture(QWidget& window);

// For a window whose pixels per point have changed: all that it shows is made anew in the new ones. The window itself
// stays as large as it is.
void renewPicture(QWidget& window);

// A level among our windows; goes with the widget, shown or not. 0 for windows that were given none.
void setLevel(QWidget& window, int level);
int levelOf(const QWidget& window);

struct ShownWindow {
  WindowId id = 0;
  OwnWindow facts;
};

// Our visible top-level windows.
std::vector<ShownWindow> shownWindows();

}  // namespace velicor::desktop::toolkit
