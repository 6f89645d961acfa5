#include "platform/desktop/compositor.h"

#include <xcb/xfixes.h>

#include "platform/desktop/display_server.h"

namespace velicor::desktop {

Compositor::Compositor(DisplayServer& server) : server_(server) {
  const x11::Extension& fixes = server_.connection().extensions().fixes;
  if (fixes.present) {
    xcb_xfixes_select_selection_input(server_.raw(), server_.root(),
                                      server_.connection().compositorSelection(),
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
  }
  events_ = server_.event.subscribe([this, fixes](const ServerEvent& event) {
    if (fixes.present && event.type() == fixes.firstEvent + XCB_XFIXES_SELECTION_NOTIFY) refresh();
  });
  refresh();
}

void Compositor::refresh() {
  x11::Connection& connection = server_.connection();
  const auto owner =
      connection.reply(xcb_get_selection_owner_reply,
                       xcb_get_selection_owner(server_.raw(), connection.compositorSelection()));
  const bool present = owner && (*owner)->owner != XCB_NONE;
  if (present == present_) return;
  present_ = present;
  changed();
}

}  // namespace velicor::desktop
