#include "platform/tray/legacy_tray.h"

#include <utility>

#include "platform/desktop/desktop.h"
#include "platform/desktop/display_server.h"
#include "platform/tray/status_area.h"
#include "platform/tray/tray_colors.h"
#include "platform/x11/properties.h"

namespace velicor::tray {

LegacyTray::LegacyTray(desktop::Desktop& desktop, const QString& title, const TemplateIcon& icon,
                       std::function<void()> clicked)
    : desktop_(desktop), icon_(icon) {
  const xcb_atom_t selection = traySelection(desktop_.server().connection());
  events_ = desktop_.server().event.subscribe([this, selection](const desktop::ServerEvent& event) {
    if (event.type() != XCB_CLIENT_MESSAGE) return;
    const auto& message = event.as<xcb_client_message_event_t>();
    const bool isTray = message.type == desktop_.server().atom(x11::Atom::manager) && message.data.data32[1] == selection;
    if (isTray) tint();
  });
  QObject::connect(&carrier_, &QSystemTrayIcon::activated, &carrier_, [clicked = std::move(clicked)] { clicked(); });
  carrier_.setToolTip(title);
  tint();
  carrier_.show();
}

void LegacyTray::tint() { carrier_.setIcon(iconOf(icon_, foreground())); }

QColor LegacyTray::foreground() const {
  x11::Connection& connection = desktop_.server().connection();
  const auto owner = connection.reply(
      xcb_get_selection_owner_reply, xcb_get_selection_owner(connection.raw(), traySelection(connection)));
  if (!owner || (*owner)->owner == XCB_NONE) return {};
  const auto asked = x11::askProperty(connection, (*owner)->owner, connection.intern("_NET_SYSTEM_TRAY_COLORS"));
  return foregroundFrom(x11::propertyNumbers(connection, asked));
}

}  // namespace velicor::tray
