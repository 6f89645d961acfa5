#pragma once

#include <array>
#include <cstddef>
#include <string>

#include <xcb/xcb.h>

namespace velicor::x11 {

// Every atom that this process uses by name: the C++ name and the server's, in one list.
#define VELICOR_X11_ATOMS(ATOM)                               \
  ATOM(esetrootPixmapId, "ESETROOT_PMAP_ID")                  \
  ATOM(manager, "MANAGER")                                    \
  ATOM(netActiveWindow, "_NET_ACTIVE_WINDOW")                 \
  ATOM(netClientList, "_NET_CLIENT_LIST")                     \
  ATOM(netClientListStacking, "_NET_CLIENT_LIST_STACKING")    \
  ATOM(netCurrentDesktop, "_NET_CURRENT_DESKTOP")             \
  ATOM(netFrameExtents, "_NET_FRAME_EXTENTS")                 \
  ATOM(netSupported, "_NET_SUPPORTED")                        \
  ATOM(netSupportingWmCheck, "_NET_SUPPORTING_WM_CHECK")      \
  ATOM(netWmBypassCompositor, "_NET_WM_BYPASS_COMPOSITOR")    \
  ATOM(netWmDesktop, "_NET_WM_DESKTOP")                       \
  ATOM(netWmName, "_NET_WM_NAME")                             \
  ATOM(netWmOpaqueRegion, "_NET_WM_OPAQUE_REGION")            \
  ATOM(netWmPid, "_NET_WM_PID")                               \
  ATOM(netWmState, "_NET_WM_STATE")                           \
  ATOM(netWmStateAbove, "_NET_WM_STATE_ABOVE")                \
  ATOM(netWmStateFullscreen, "_NET_WM_STATE_FULLSCREEN")      \
  ATOM(netWmStateHidden, "_NET_WM_STATE_HIDDEN")              \
  ATOM(netWmStateShaded, "_NET_WM_STATE_SHADED")              \
  ATOM(netWmStateSkipPager, "_NET_WM_STATE_SKIP_PAGER")       \
  ATOM(netWmStateSkipTaskbar, "_NET_WM_STATE_SKIP_TASKBAR")   \
  ATOM(netWmStrut, "_NET_WM_STRUT")                           \
  ATOM(netWmStrutPartial, "_NET_WM_STRUT_PARTIAL")            \
  ATOM(netWmUserTime, "_NET_WM_USER_TIME")                    \
  ATOM(netWmWindowOpacity, "_NET_WM_WINDOW_OPACITY")          \
  ATOM(netWmWindowType, "_NET_WM_WINDOW_TYPE")                \
  ATOM(netWmWindowTypeDesktop, "_NET_WM_WINDOW_TYPE_DESKTOP") \
  ATOM(netWmWindowTypeDock, "_NET_WM_WINDOW_TYPE_DOCK")       \
  ATOM(netWmWindowTypeUtility, "_NET_WM_WINDOW_TYPE_UTILITY") \
  ATOM(netWorkarea, "_NET_WORKAREA")                          \
  ATOM(utf8String, "UTF8_STRING")                             \
  ATOM(wmState, "WM_STATE")                                   \
  ATOM(xrootPixmapId, "_XROOTPMAP_ID")

enum class Atom : std::size_t {
#define VELICOR_X11_ENUMERATOR(name, text) name,
  VELICOR_X11_ATOMS(VELICOR_X11_ENUMERATOR)
#undef VELICOR_X11_ENUMERATOR
      count
};

// The atoms as one server numbers them.
class Atoms {
 public:
  Atoms() = default;

  // One round trip for all of them.
  Atoms(xcb_connection_t* connection, int screenNumber);

  xcb_atom_t operator[](Atom atom) const { return values_[static_cast<std::size_t>(atom)]; }

  // The selection whose owner is the screen's compositing manager.
  xcb_atom_t compositorSelection() const { return compositorSelection_; }

  // The selection whose owner takes icons in.
  xcb_atom_t traySelection() const { return traySelection_; }

 private:
  std::array<xcb_atom_t, static_cast<std::size_t>(Atom::count)> values_{};
  xcb_atom_t compositorSelection_ = XCB_ATOM_NONE;
  xcb_atom_t traySelection_ = XCB_ATOM_NONE;
};

}  // namespace velicor::x11
