#pragma once

#include <cstdint>
#include <optional>

// Keys by their position: the codes in which a shortcut is stored name the place of a key on the board,
// whatever is printed on it. 0 is the key that types A on a US keyboard, 1 the one right of it.
namespace velicor::hotkeys {

// The keycode by which the X server knows that key; none for codes that no key has.
std::optional<std::uint8_t> serverKeycode(std::uint32_t keyCode);

// The code of the key that the server knows by this keycode; none for keys that have no code, modifier keys
// among them.
std::optional<std::uint32_t> keyCodeOf(std::uint32_t serverKeycode);

}  // namespace velicor::hotkeys
