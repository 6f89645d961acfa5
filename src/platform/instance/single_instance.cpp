#include "platform/instance/single_instance.h"

#include <string>

#include <unistd.h>

#include "platform/desktop/desktop.h"
#include "platform/desktop/display_server.h"

namespace velicor {

namespace {

// Never mapped; the selection belongs to it.
xcb_window_t makeWindow(x11::Connection& connection) {
  const xcb_window_t window = connection.newId();
  xcb_create_window(connection.raw(), XCB_COPY_FROM_PARENT, window, connection.root(), -1, -1, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
  return window;
}

void tell(x11::Connection& connection, xcb_window_t owner, xcb_atom_t message) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = owner;
  event.type = message;
  // To a window that nobody has selected events of, it goes to the client that made it. The owner may have
  // gone just now.
  static_cast<void>(connection.check(xcb_send_event_checked(connection.raw(), 0, owner, XCB_EVENT_MASK_NO_EVENT,
                                                            reinterpret_cast<const char*>(&event))));
}

xcb_window_t ownerOf(x11::Connection& connection, xcb_atom_t selection) {
  const auto owner = connection.reply(xcb_get_selection_owner_reply,
                                      xcb_get_selection_owner(connection.raw(), selection));
  return owner ? (*owner)->owner : xcb_window_t{XCB_NONE};
}

}  // namespace

std::unique_ptr<SingleInstance> SingleInstance::claim(desktop::Desktop& desktop, std::string_view program) {
  x11::Connection& connection = desktop.server().connection();
  const std::string name = "_" + std::string(program) + "_INSTANCE_" + std::to_string(geteuid());
  const xcb_atom_t selection = connection.intern(name);
  const xcb_atom_t message = connection.intern(name + "_WANTED");
  // Two that start at the same time must not both find nobody.
  xcb_grab_server(connection.raw());
  const xcb_window_t owner = ownerOf(connection, selection);
  const xcb_window_t window = owner == XCB_NONE ? makeWindow(connection) : xcb_window_t{XCB_NONE};
  if (window != XCB_NONE) xcb_set_selection_owner(connection.raw(), window, selection, XCB_CURRENT_TIME);
  xcb_ungrab_server(connection.raw());
  connection.flush();
  if (window != XCB_NONE) return std::unique_ptr<SingleInstance>(new SingleInstance(desktop, window, message));
  tell(connection, owner, message);
  return nullptr;
}

SingleInstance::SingleInstance(desktop::Desktop& desktop, std::uint32_t window, std::uint32_t message)
    : desktop_(desktop), window_(window) {
  events_ = desktop_.server().event.subscribe([this, message](const desktop::ServerEvent& event) {
    if (event.type() != XCB_CLIENT_MESSAGE) return;
    const auto& told = event.as<xcb_client_message_event_t>();
    if (told.window == window_ && told.type == message) wanted();
  });
}

SingleInstance::~SingleInstance() {
  xcb_destroy_window(desktop_.server().raw(), window_);
  desktop_.server().connection().flush();
}

}  // namespace velicor
