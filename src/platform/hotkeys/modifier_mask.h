#pragma once

#include <cstdint>

// The modifier keys of a global shortcut, as it is stored and shown. On the keyboard command is Super and
// option is Alt.
namespace velicor::hotkeys {

enum ModifierMask : std::uint32_t {
  commandKey = 0x0100,
  shiftKey = 0x0200,
  optionKey = 0x0800,
  controlKey = 0x1000,
};

}  // namespace velicor::hotkeys
