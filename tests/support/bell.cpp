#include "support/bell.h"

#include <cstdlib>
#include <memory>
#include <stdexcept>

#include "platform/hotkeys/xkb_protocol.h"
#include "support/main_loop.h"

namespace velicor::test {

Bell::Bell(const std::string& display) : connection_(xcb_connect(display.c_str(), nullptr)) {
  if (xcb_connection_has_error(connection_) != 0) throw std::runtime_error("no display to hear the bell of");
  xcb_xkb_use_extension(connection_, 1, 0);
  xcb_xkb_select_events(connection_, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_EVENT_TYPE_BELL_NOTIFY, 0,
                        XCB_XKB_EVENT_TYPE_BELL_NOTIFY, 0, 0, nullptr);
  std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

Bell::~Bell() { xcb_disconnect(connection_); }

bool Bell::sounds() const {
  return waitUntil([this] {
    const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event(xcb_poll_for_event(connection_),
                                                                           &std::free);
    return event && event->pad0 == XCB_XKB_BELL_NOTIFY;
  });
}

}  // namespace velicor::test
