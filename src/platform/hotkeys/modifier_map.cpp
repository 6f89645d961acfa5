#include "platform/hotkeys/modifier_map.h"

#include <algorithm>
#include <array>
#include <initializer_list>

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include "platform/hotkeys/keymap.h"
#include "platform/hotkeys/modifier_mask.h"
#include "platform/x11/connection.h"

namespace velicor::hotkeys {

namespace {

constexpr int modifierCount = 8;
constexpr std::uint16_t allModifiers = 0xff;

using Meanings = std::array<std::vector<xkb_keysym_t>, modifierCount>;  // of the keys of each modifier

// The modifiers that one of the keys is; by name, since the numbered ones are free for any use.
std::uint16_t modifiersOf(const Meanings& meanings, std::initializer_list<xkb_keysym_t> keys) {
  std::uint16_t mask = 0;
  for (unsigned modifier = XCB_MAP_INDEX_1; modifier < modifierCount; ++modifier) {
    for (const xkb_keysym_t meaning : meanings[modifier]) {
      if (std::ranges::find(keys, meaning) != keys.end()) mask |= static_cast<std::uint16_t>(1U << modifier);
    }
  }
  return mask;
}

// One modifier: a grab with two of them would ask for both.
std::uint16_t lowest(std::uint16_t mask) { return static_cast<std::uint16_t>(mask & -mask); }

}  // namespace

std::uint16_t ModifierMap::toServer(std::uint32_t modifiers) const {
  unsigned mask = 0;
  if ((modifiers & commandKey) != 0) mask |= command;
  if ((modifiers & shiftKey) != 0) mask |= shift;
  if ((modifiers & optionKey) != 0) mask |= option;
  if ((modifiers & controlKey) != 0) mask |= control;
  return static_cast<std::uint16_t>(mask);
}

std::uint16_t ModifierMap::withoutLocks(std::uint16_t state) const {
  return static_cast<std::uint16_t>(state & allModifiers & ~locks);
}

std::vector<std::uint16_t> ModifierMap::lockCombinations() const {
  std::vector<std::uint16_t> combinations{0};
  for (unsigned bit = 1; bit <= locks; bit <<= 1) {
    if ((locks & bit) == 0) continue;
    const std::size_t before = combinations.size();
    for (std::size_t index = 0; index < before; ++index)
      combinations.push_back(static_cast<std::uint16_t>(combinations[index] | bit));
  }
  return combinations;
}

ModifierMap readModifiers(x11::Connection& connection, const Keymap& keymap) {
  ModifierMap map;
  const auto reply =
      connection.reply(xcb_get_modifier_mapping_reply, xcb_get_modifier_mapping(connection.raw()));
  if (!reply) return map;
  Meanings meanings;
  const xcb_keycode_t* keycode = xcb_get_modifier_mapping_keycodes(reply->get());
  for (auto& of : meanings) {
    for (int key = 0; key < (*reply)->keycodes_per_modifier; ++key, ++keycode) {
      if (*keycode == 0) continue;
      const auto more = keymap.meanings(*keycode);
      of.insert(of.end(), more.begin(), more.end());
    }
  }
  const std::uint16_t alt = modifiersOf(meanings, {XKB_KEY_Alt_L, XKB_KEY_Alt_R});
  const std::uint16_t super = modifiersOf(meanings, {XKB_KEY_Super_L, XKB_KEY_Super_R});
  if (alt != 0) map.option = lowest(alt);
  if (super != 0) map.command = lowest(super);
  const unsigned used = map.option | map.command;
  const unsigned numberAndScroll = modifiersOf(meanings, {XKB_KEY_Num_Lock, XKB_KEY_Scroll_Lock});
  map.locks = static_cast<std::uint16_t>(map.locks | (numberAndScroll & ~used));
  return map;
}

}  // namespace velicor::hotkeys
