#pragma once

#include <cstdint>
#include <vector>

namespace velicor::x11 {
class Connection;
}

namespace velicor::hotkeys {

class Keymap;

// Which of the server's eight modifiers (bits of a key event's state) stand for what. A plain value; starts
// with the usual places.
struct ModifierMap {
  std::uint16_t shift = 1 << 0;
  std::uint16_t control = 1 << 2;
  std::uint16_t option = 1 << 3;
  std::uint16_t command = 1 << 6;
  std::uint16_t locks = 1 << 1;  // caps lock, num lock and scroll lock, as far as they are modifiers

  // A mask of ModifierMask as the server's.
  std::uint16_t toServer(std::uint32_t modifiers) const;

  // A key event's state without locks and mouse buttons.
  std::uint16_t withoutLocks(std::uint16_t state) const;

  // Every way in which the locks can be on and off, none at all first.
  std::vector<std::uint16_t> lockCombinations() const;

  friend bool operator==(const ModifierMap&, const ModifierMap&) = default;
};

// Looks where the keys called Alt, Super, Num Lock and Scroll Lock are. A round trip; what it does not find
// is in its usual place, a lock nowhere.
ModifierMap readModifiers(x11::Connection& connection, const Keymap& keymap);

}  // namespace velicor::hotkeys
