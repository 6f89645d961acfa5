#include "platform/hotkeys/key_grab.h"

#include <utility>

#include "platform/x11/connection.h"

namespace velicor::hotkeys {

KeyGrab::KeyGrab(x11::Connection& connection, std::uint8_t keycode, std::uint32_t modifiers)
    : connection_(connection), keycode_(keycode), modifiers_(modifiers) {}

KeyGrab::~KeyGrab() { release(); }

Status KeyGrab::take(const ModifierMap& map) {
  std::vector<std::uint16_t> wanted = map.lockCombinations();
  for (std::uint16_t& modifiers : wanted)
    modifiers |= map.toServer(modifiers_);
  if (wanted == held_) return {};
  release();

  std::vector<xcb_void_cookie_t> requests;
  for (const std::uint16_t modifiers : wanted) {
    requests.push_back(xcb_grab_key_checked(connection_.raw(), 0, connection_.root(), modifiers, keycode_,
                                            XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
  }
  Status outcome;
  for (std::size_t part = 0; part < wanted.size(); ++part) {
    Status taken = connection_.check(requests[part]);
    if (taken) {
      held_.push_back(wanted[part]);
    } else if (outcome) {
      outcome = std::move(taken);
    }
  }
  if (!outcome) release();
  return outcome;
}

void KeyGrab::release() {
  for (const std::uint16_t modifiers : std::exchange(held_, {}))
    xcb_ungrab_key(connection_.raw(), keycode_, connection_.root(), modifiers);
  connection_.flush();
}

bool KeyGrab::isSameAs(const KeyGrab& other, const ModifierMap& map) const {
  return keycode_ == other.keycode_ && map.toServer(modifiers_) == map.toServer(other.modifiers_);
}

bool KeyGrab::matches(const xcb_key_press_event_t& event, const ModifierMap& map) const {
  return event.detail == keycode_ && map.withoutLocks(event.state) == map.toServer(modifiers_);
}

}  // namespace velicor::hotkeys
