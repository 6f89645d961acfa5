#include "platform/hotkeys/keymap.h"

#include <algorithm>
#include <array>
#include <span>

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>
#include <QList>
#include <QString>

namespace velicor::hotkeys {

namespace {

struct Accent {
  xkb_keysym_t key;
  const char* text;
};

constexpr Accent accents[] = {
    {XKB_KEY_dead_grave, "`"},       {XKB_KEY_dead_acute, "´"},     {XKB_KEY_dead_circumflex, "^"},
    {XKB_KEY_dead_tilde, "~"},       {XKB_KEY_dead_macron, "¯"},    {XKB_KEY_dead_breve, "˘"},
    {XKB_KEY_dead_abovedot, "˙"},    {XKB_KEY_dead_diaeresis, "¨"}, {XKB_KEY_dead_abovering, "˚"},
    {XKB_KEY_dead_doubleacute, "˝"}, {XKB_KEY_dead_caron, "ˇ"},     {XKB_KEY_dead_cedilla, "¸"},
    {XKB_KEY_dead_ogonek, "˛"}};

// The layout's idea of a keypad without num lock is a second set of arrows.
bool movesCursor(xkb_keysym_t symbol) { return symbol >= XKB_KEY_KP_Home && symbol <= XKB_KEY_KP_Delete; }

std::span<const xkb_keysym_t> symbolsAt(xkb_keymap* keymap, xkb_keycode_t key, xkb_layout_index_t layout,
                                        xkb_level_index_t level) {
  const xkb_keysym_t* symbols = nullptr;
  const int count = xkb_keymap_key_get_syms_by_level(keymap, key, layout, level, &symbols);
  return {symbols, static_cast<std::size_t>(std::max(count, 0))};
}

std::string textOf(xkb_keysym_t symbol) {
  const auto* const accent = std::ranges::find(accents, symbol, &Accent::key);
  if (accent != std::end(accents)) return accent->text;
  std::array<char, 8> text{};
  if (xkb_keysym_to_utf8(symbol, text.data(), text.size()) <= 0) return {};
  const auto isVisible = [](uint character) { return QChar::isPrint(character); };
  const bool visible = std::ranges::all_of(QString::fromUtf8(text.data()).toUcs4(), isVisible);
  return visible ? text.data() : std::string();
}

}  // namespace

std::unique_ptr<Keymap> Keymap::read(xcb_connection_t* connection) {
  const std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> context(
      xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES), xkb_context_unref);
  const std::int32_t keyboard = context ? xkb_x11_get_core_keyboard_device_id(connection) : -1;
  if (keyboard < 0) return nullptr;
  xkb_keymap* const keymap =
      xkb_x11_keymap_new_from_device(context.get(), connection, keyboard, XKB_KEYMAP_COMPILE_NO_FLAGS);
  return keymap ? std::unique_ptr<Keymap>(new Keymap(keymap)) : nullptr;
}

std::string Keymap::typedBy(std::uint8_t serverKeycode, std::uint32_t layout) const {
  auto symbols = symbolsAt(keymap_.get(), serverKeycode, layout, 0);
  if (!symbols.empty() && movesCursor(symbols.front())) {
    symbols = symbolsAt(keymap_.get(), serverKeycode, layout, 1);
  }
  std::string text;
  for (const xkb_keysym_t symbol : symbols)
    text += textOf(symbol);
  return text;
}

std::vector<xkb_keysym_t> Keymap::meanings(std::uint8_t serverKeycode) const {
  std::vector<xkb_keysym_t> all;
  const xkb_layout_index_t layouts = xkb_keymap_num_layouts_for_key(keymap_.get(), serverKeycode);
  for (xkb_layout_index_t layout = 0; layout < layouts; ++layout) {
    const xkb_level_index_t levels = xkb_keymap_num_levels_for_key(keymap_.get(), serverKeycode, layout);
    for (xkb_level_index_t level = 0; level < levels; ++level) {
      const auto symbols = symbolsAt(keymap_.get(), serverKeycode, layout, level);
      all.insert(all.end(), symbols.begin(), symbols.end());
    }
  }
  return all;
}

}  // namespace velicor::hotkeys
