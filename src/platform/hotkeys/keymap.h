#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <xkbcommon/xkbcommon.h>

struct xcb_connection_t;

namespace velicor::hotkeys {

// What the keys of the keyboard mean, as the server had it when it was read. Never changes.
class Keymap {
 public:
  // Of the core keyboard. Some round trips; none where the server doesn't tell, or tells what can't be
  // understood. The connection must have set up the keyboard extension.
  static std::unique_ptr<Keymap> read(xcb_connection_t* connection);

  // What a key types without modifiers in one of the layouts (those beyond the last are brought back into
  // range), in UTF-8: empty when that is nothing, or nothing visible. The keypad's keys are digits, and keys
  // that wait for a letter to put an accent on are the accent.
  std::string typedBy(std::uint8_t serverKeycode, std::uint32_t layout) const;

  // All that a key can mean, whatever the layout and the modifiers.
  std::vector<xkb_keysym_t> meanings(std::uint8_t serverKeycode) const;

 private:
  struct Unref {
    void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
  };

  explicit Keymap(xkb_keymap* keymap) : keymap_(keymap) {}

  std::unique_ptr<xkb_keymap, Unref> keymap_;
};

}  // namespace velicor::hotkeys
