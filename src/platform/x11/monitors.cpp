#include "platform/x11/monitors.h"

#include <xcb/randr.h>

namespace velicor::x11 {

namespace {

Result<std::vector<Monitor>> wholeRoot(Connection& connection) {
  const auto geometry =
      connection.reply(xcb_get_geometry_reply, xcb_get_geometry(connection.raw(), connection.root()));
  if (!geometry) return tl::make_unexpected(geometry.error());
  return std::vector<Monitor>{
      {connection.root(), "screen", {0, 0, (*geometry)->width, (*geometry)->height}, true}};
}

void nameMonitors(Connection& connection, std::vector<Monitor>& monitors) {
  std::vector<xcb_get_atom_name_cookie_t> cookies;
  cookies.reserve(monitors.size());
  for (const Monitor& monitor : monitors)
    cookies.push_back(xcb_get_atom_name(connection.raw(), monitor.id));
  for (std::size_t i = 0; i < monitors.size(); ++i) {
    const auto name = connection.reply(xcb_get_atom_name_reply, cookies[i]);
    if (!name) continue;
    monitors[i].name.assign(xcb_get_atom_name_name(name->get()),
                            static_cast<std::size_t>(xcb_get_atom_name_name_length(name->get())));
  }
}

}  // namespace

Result<std::vector<Monitor>> readMonitors(Connection& connection) {
  if (!connection.extensions().randr.atLeast(1, 5)) return wholeRoot(connection);
  const auto reply = connection.reply(xcb_randr_get_monitors_reply,
                                      xcb_randr_get_monitors(connection.raw(), connection.root(), 1));
  if (!reply) return tl::make_unexpected(reply.error());
  std::vector<Monitor> monitors;
  auto entries = xcb_randr_get_monitors_monitors_iterator(reply->get());
  for (; entries.rem > 0; xcb_randr_monitor_info_next(&entries)) {
    const xcb_randr_monitor_info_t& info = *entries.data;
    monitors.push_back({info.name, {}, {info.x, info.y, info.width, info.height}, info.primary != 0});
  }
  nameMonitors(connection, monitors);
  return monitors;
}

void watchMonitors(Connection& connection) {
  if (!connection.extensions().randr.present) return;
  xcb_randr_select_input(connection.raw(), connection.root(),
                         XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                             XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
}

bool isMonitorChange(const Connection& connection, const xcb_generic_event_t& event) {
  if (eventType(event) == XCB_CONFIGURE_NOTIFY) {
    return reinterpret_cast<const xcb_configure_notify_event_t&>(event).window == connection.root();
  }
  const Extension& randr = connection.extensions().randr;
  const int kind = eventType(event) - randr.firstEvent;
  return randr.present && (kind == XCB_RANDR_SCREEN_CHANGE_NOTIFY || kind == XCB_RANDR_NOTIFY);
}

}  // namespace velicor::x11
