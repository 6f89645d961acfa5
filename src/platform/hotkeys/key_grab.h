#pragma once

#include <cstdint>
#include <vector>

#include <xcb/xcb.h>

#include "platform/base/error.h"
#include "platform/hotkeys/modifier_map.h"

namespace velicor::x11 {
class Connection;
}

namespace velicor::hotkeys {

// One key combination, held by us under every state of the locks, or not held at all.
class KeyGrab {
 public:
  // Holds nothing yet. The modifiers are bits of ModifierMask. The connection outlives the grab.
  KeyGrab(x11::Connection& connection, std::uint8_t keycode, std::uint32_t modifiers);
  ~KeyGrab();
  KeyGrab(const KeyGrab&) = delete;
  KeyGrab& operator=(const KeyGrab&) = delete;

  // Takes the combination where the map says that the modifiers are, instead of where it was. All of it or
  // nothing; fails with the server's first refusal. A round trip, none where all of it is held already.
  Status take(const ModifierMap& map);

  std::uint8_t keycode() const { return keycode_; }
  bool isSameAs(const KeyGrab& other, const ModifierMap& map) const;

  // Whether a key event is this combination.
  bool matches(const xcb_key_press_event_t& event, const ModifierMap& map) const;

 private:
  void release();

  x11::Connection& connection_;
  const std::uint8_t keycode_;
  const std::uint32_t modifiers_;
  std::vector<std::uint16_t> held_;  // the server's modifiers, locks among them, of each part that is held
};

}  // namespace velicor::hotkeys
