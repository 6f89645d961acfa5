#include "platform/hotkeys/keyboard.h"

#include <utility>

#include <xkbcommon/xkbcommon-x11.h>
#include <QString>

#include "platform/desktop/display_server.h"
#include "platform/dispatch/main_queue.h"
#include "platform/hotkeys/key_codes.h"
#include "platform/hotkeys/keymap.h"
#include "platform/hotkeys/xkb_protocol.h"
#include "platform/log/log.h"

namespace velicor::hotkeys {

namespace {

constexpr std::uint16_t coreKeyboard = XCB_XKB_ID_USE_CORE_KBD;

}  // namespace

Keyboard::Keyboard(desktop::DisplayServer& server) : server_(server) {
  const bool told = xkb_x11_setup_xkb_extension(
                        server_.raw(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                        XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &firstEvent_, nullptr) != 0;
  if (!told) {
    log::Logger("hotkeys").error("the X server does not tell the keyboard's layout");
    return;
  }
  listen();
  read();
}

Keyboard::~Keyboard() = default;

void Keyboard::listen() {
  // A key that is held down is then pressed again and again without being released in between.
  constexpr std::uint32_t noReleaseOfRepeats = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
  const auto answer = server_.connection().reply(
      xcb_xkb_per_client_flags_reply,
      xcb_xkb_per_client_flags(server_.raw(), coreKeyboard, noReleaseOfRepeats, noReleaseOfRepeats, 0, 0, 0));
  if (!answer) {
    log::Logger("hotkeys").error("a key that is held down counts as often as it repeats: " +
                                 answer.error().description);
  }
  constexpr std::uint16_t keyboards = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY;
  constexpr std::uint16_t maps = XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
  constexpr std::uint16_t states = XCB_XKB_EVENT_TYPE_STATE_NOTIFY;
  constexpr std::uint16_t mapParts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS |
                                     XCB_XKB_MAP_PART_MODIFIER_MAP | XCB_XKB_MAP_PART_VIRTUAL_MODS |
                                     XCB_XKB_MAP_PART_VIRTUAL_MOD_MAP;
  // Of the state only the layout: modifiers change with every key.
  xcb_xkb_select_events_details_t details{};
  details.affectNewKeyboard = details.newKeyboardDetails = XCB_XKB_NKN_DETAIL_KEYCODES;
  details.affectState = details.stateDetails = XCB_XKB_STATE_PART_GROUP_LOCK;
  xcb_xkb_select_events_aux(server_.raw(), coreKeyboard, keyboards | maps | states, 0, 0, mapParts, mapParts,
                            &details);
  events_ = server_.event.subscribe([this](const desktop::ServerEvent& event) { handle(event); });
}

void Keyboard::handle(const desktop::ServerEvent& event) {
  if (event.type() == XCB_MAPPING_NOTIFY) return readSoon();
  if (event.type() != firstEvent_) return;
  // Every event of the extension has its kind in the second byte.
  if (event.raw.pad0 != XCB_XKB_STATE_NOTIFY) return readSoon();
  layout_ = event.as<xcb_xkb_state_notify_event_t>().lockedGroup;
  changed();
}

// A new layout comes as a handful of events.
void Keyboard::readSoon() {
  if (awaited_) return;
  awaited_ = std::make_shared<Keyboard*>(this);
  dispatch::MainQueue::shared().async([awaited = std::weak_ptr(awaited_)] {
    if (const auto self = awaited.lock()) {
      (*self)->awaited_.reset();
      (*self)->read();
      (*self)->changed();
    }
  });
}

void Keyboard::read() {
  x11::Connection& connection = server_.connection();
  if (connection.isLost()) return;
  keymap_ = Keymap::read(connection.raw());
  if (!keymap_) return log::Logger("hotkeys").error("the keyboard's layout can't be understood");
  modifiers_ = readModifiers(connection, *keymap_);
  const auto state =
      connection.reply(xcb_xkb_get_state_reply, xcb_xkb_get_state(connection.raw(), coreKeyboard));
  if (state) layout_ = (*state)->lockedGroup;
}

std::string Keyboard::keyName(std::uint32_t keyCode) const {
  const auto keycode = serverKeycode(keyCode);
  const std::string text = keymap_ && keycode ? keymap_->typedBy(*keycode, layout_) : std::string();
  return text.empty() ? "?" : QString::fromStdString(text).toUpper().toStdString();
}

}  // namespace velicor::hotkeys
