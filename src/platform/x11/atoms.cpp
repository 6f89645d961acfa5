#include "platform/x11/atoms.h"

#include <cstdint>
#include <string_view>

#include "platform/x11/owned.h"

namespace velicor::x11 {

namespace {

constexpr std::array<std::string_view, static_cast<std::size_t>(Atom::count)> names{
#define VELICOR_X11_NAME(name, text) text,
    VELICOR_X11_ATOMS(VELICOR_X11_NAME)
#undef VELICOR_X11_NAME
};

xcb_intern_atom_cookie_t ask(xcb_connection_t* connection, std::string_view name) {
  return xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
}

xcb_atom_t answer(xcb_connection_t* connection, xcb_intern_atom_cookie_t cookie) {
  const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

}  // namespace

Atoms::Atoms(xcb_connection_t* connection, int screenNumber) {
  std::array<xcb_intern_atom_cookie_t, names.size()> cookies{};
  for (std::size_t i = 0; i < names.size(); ++i)
    cookies[i] = ask(connection, names[i]);
  const auto selection = ask(connection, "_NET_WM_CM_S" + std::to_string(screenNumber));
  const auto tray = ask(connection, "_NET_SYSTEM_TRAY_S" + std::to_string(screenNumber));
  for (std::size_t i = 0; i < names.size(); ++i)
    values_[i] = answer(connection, cookies[i]);
  compositorSelection_ = answer(connection, selection);
  traySelection_ = answer(connection, tray);
}

}  // namespace velicor::x11
