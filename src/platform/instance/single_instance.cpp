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

void send(x11::Connection& connection, xcb_window_t owner, xcb_atom_t message, std::uint32_t wish) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = owner;
  event.type = message;
  event.data.data32[0] = wish;
  // To a window that nobody has selected events of, it goes to the client that made it. The owner may have
  // gone just now.
  static_cast<void>(connection.check(xcb_send_event_checked(connection.raw(), 0, owner, XCB_EVENT_MASK_NO_EVENT,
                                                            reinterpret_cast<const char*>(&event))));
}

// What the claim goes by on the server.
struct Names {
  Names(x11::Connection& connection, std::string_view program)
      : Names(connection, "_" + std::string(program) + "_INSTANCE_" + std::to_string(geteuid())) {}

  xcb_atom_t selection;
  xcb_atom_t message;

 private:
  Names(x11::Connection& connection, const std::string& name)
      : selection(connection.intern(name)), message(connection.intern(name + "_WANTED")) {}
};

xcb_window_t ownerOf(x11::Connection& connection, xcb_atom_t selection) {
  const auto owner = connection.reply(xcb_get_selection_owner_reply,
                                      xcb_get_selection_owner(connection.raw(), selection));
  return owner ? (*owner)->owner : xcb_window_t{XCB_NONE};
}

}  // namespace

std::unique_ptr<SingleInstance> SingleInstance::claim(desktop::Desktop& desktop, std::string_view program,
                                                      std::uint32_t wish) {
  x11::Connection& connection = desktop.server().connection();
  const Names names(connection, program);
  // Two that start at the same time must not both find nobody.
  xcb_grab_server(connection.raw());
  const xcb_window_t owner = ownerOf(connection, names.selection);
  const xcb_window_t window = owner == XCB_NONE ? makeWindow(connection) : xcb_window_t{XCB_NONE};
  if (window != XCB_NONE) xcb_set_selection_owner(connection.raw(), window, names.selection, XCB_CURRENT_TIME);
  xcb_ungrab_server(connection.raw());
  connection.flush();
  if (window != XCB_NONE) return std::unique_ptr<SingleInstance>(new SingleInstance(desktop, window, names.message));
  send(connection, owner, names.message, wish);
  return nullptr;
}

bool SingleInstance::tell(x11::Connection& connection, std::string_view program, std::uint32_t wish) {
  const Names names(connection, program);
  const xcb_window_t owner = ownerOf(connection, names.selection);
  if (owner == XCB_NONE) return false;
  send(connection, owner, names.message, wish);
  return true;
}

SingleInstance::SingleInstance(desktop::Desktop& desktop, std::uint32_t window, std::uint32_t message)
    : desktop_(desktop), window_(window) {
  events_ = desktop_.server().event.subscribe([this, message](const desktop::ServerEvent& event) {
    if (event.type() != XCB_CLIENT_MESSAGE) return;
    const auto& told = event.as<xcb_client_message_event_t>();
    if (told.window == window_ && told.type == message) wanted(told.data.data32[0]);
  });
}

SingleInstance::~SingleInstance() {
  xcb_destroy_window(desktop_.server().raw(), window_);
  desktop_.server().connection().flush();
}

}  // namespace velicor
