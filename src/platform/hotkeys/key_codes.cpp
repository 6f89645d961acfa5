#include "platform/hotkeys/key_codes.h"

#include <algorithm>
#include <iterator>

#include <linux/input-event-codes.h>

namespace velicor::hotkeys {

namespace {

struct Key {
  std::uint8_t code;
  std::uint8_t device;  // the number that the kernel gives the same key
};

constexpr Key keys[] = {
    // The main block, row by row.
    {50, KEY_GRAVE},
    {18, KEY_1},
    {19, KEY_2},
    {20, KEY_3},
    {21, KEY_4},
    {23, KEY_5},
    {22, KEY_6},
    {26, KEY_7},
    {28, KEY_8},
    {25, KEY_9},
    {29, KEY_0},
    {27, KEY_MINUS},
    {24, KEY_EQUAL},
    {93, KEY_YEN},
    {51, KEY_BACKSPACE},
    {48, KEY_TAB},
    {12, KEY_Q},
    {13, KEY_W},
    {14, KEY_E},
    {15, KEY_R},
    {17, KEY_T},
    {16, KEY_Y},
    {32, KEY_U},
    {34, KEY_I},
    {31, KEY_O},
    {35, KEY_P},
    {33, KEY_LEFTBRACE},
    {30, KEY_RIGHTBRACE},
    {42, KEY_BACKSLASH},
    {0, KEY_A},
    {1, KEY_S},
    {2, KEY_D},
    {3, KEY_F},
    {5, KEY_G},
    {4, KEY_H},
    {38, KEY_J},
    {40, KEY_K},
    {37, KEY_L},
    {41, KEY_SEMICOLON},
    {39, KEY_APOSTROPHE},
    {36, KEY_ENTER},
    {10, KEY_102ND},  // between shift and Z, where the board has it
    {6, KEY_Z},
    {7, KEY_X},
    {8, KEY_C},
    {9, KEY_V},
    {11, KEY_B},
    {45, KEY_N},
    {46, KEY_M},
    {43, KEY_COMMA},
    {47, KEY_DOT},
    {44, KEY_SLASH},
    {94, KEY_RO},
    {102, KEY_HANJA},
    {49, KEY_SPACE},
    {104, KEY_HANGEUL},
    {110, KEY_COMPOSE},

    // Escape and the function keys.
    {53, KEY_ESC},
    {122, KEY_F1},
    {120, KEY_F2},
    {99, KEY_F3},
    {118, KEY_F4},
    {96, KEY_F5},
    {97, KEY_F6},
    {98, KEY_F7},
    {100, KEY_F8},
    {101, KEY_F9},
    {109, KEY_F10},
    {103, KEY_F11},
    {111, KEY_F12},
    {105, KEY_F13},
    {107, KEY_F14},
    {113, KEY_F15},
    {106, KEY_F16},
    {64, KEY_F17},
    {79, KEY_F18},
    {80, KEY_F19},
    {90, KEY_F20},

    // Between the main block and the keypad.
    {114, KEY_INSERT},
    {115, KEY_HOME},
    {116, KEY_PAGEUP},
    {117, KEY_DELETE},
    {119, KEY_END},
    {121, KEY_PAGEDOWN},
    {123, KEY_LEFT},
    {124, KEY_RIGHT},
    {125, KEY_DOWN},
    {126, KEY_UP},

    // The keypad.
    {82, KEY_KP0},
    {83, KEY_KP1},
    {84, KEY_KP2},
    {85, KEY_KP3},
    {86, KEY_KP4},
    {87, KEY_KP5},
    {88, KEY_KP6},
    {89, KEY_KP7},
    {91, KEY_KP8},
    {92, KEY_KP9},
    {65, KEY_KPDOT},
    {95, KEY_KPCOMMA},
    {67, KEY_KPASTERISK},
    {69, KEY_KPPLUS},
    {75, KEY_KPSLASH},
    {78, KEY_KPMINUS},
    {76, KEY_KPENTER},
    {81, KEY_KPEQUAL},

    // Sound.
    {72, KEY_VOLUMEUP},
    {73, KEY_VOLUMEDOWN},
    {74, KEY_MUTE},
};

// The X server counts keys from 8.
constexpr std::uint8_t firstKeycode = 8;

}  // namespace

std::optional<std::uint8_t> serverKeycode(std::uint32_t keyCode) {
  const auto* const key = std::ranges::find(keys, keyCode, &Key::code);
  if (key == std::end(keys)) return std::nullopt;
  return static_cast<std::uint8_t>(key->device + firstKeycode);
}

std::optional<std::uint32_t> keyCodeOf(std::uint32_t serverKeycode) {
  const auto* const key = std::ranges::find(
      keys, serverKeycode, [](const Key& each) { return each.device + std::uint32_t{firstKeycode}; });
  return key == std::end(keys) ? std::nullopt : std::optional<std::uint32_t>(key->code);
}

}  // namespace velicor::hotkeys
