// The program's one shortcut, and what a combination is called: on the keyboard that main() has installed.
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <utility>

#include "menubar/hot_key.h"
#include "platform/log/log.h"

namespace velicor {

namespace {

using Name = std::pair<std::uint32_t, std::string_view>;

// Keys that have a symbol or a name whatever the layout.
constexpr std::array<Name, 4> fixedNames = {{{36, "↩"}, {48, "⇥"}, {49, "Space"}, {53, "⎋"}}};

constexpr std::pair<hotkeys::ModifierMask, std::string_view> symbols[] = {{hotkeys::controlKey, "⌃"},
                                                                          {hotkeys::optionKey, "⌥"},
                                                                          {hotkeys::shiftKey, "⇧"},
                                                                          {hotkeys::commandKey, "⌘"}};

template <std::size_t size>
std::optional<std::string_view> find(const std::array<Name, size>& names, std::uint32_t keyCode) {
  const auto found = std::ranges::find(names, keyCode, &Name::first);
  return found == names.end() ? std::nullopt : std::optional(found->second);
}

// Both are emptied by Installation and never by the end of the process, which may come from inside a call.
std::optional<HotKey::Environment>& installed() {
  static auto* const environment = new std::optional<HotKey::Environment>;
  return *environment;
}

std::unique_ptr<HotKey>& instance() {
  static auto* const hotKey = new std::unique_ptr<HotKey>;
  return *hotKey;
}

[[noreturn]] void misuse(const char* what) {
  log::general(what);
  std::abort();
}

}  // namespace

HotKey::Installation::Installation(Environment environment) {
  if (installed()) misuse("HotKey: a second environment was installed");
  installed().emplace(environment);
}

HotKey::Installation::~Installation() {
  instance().reset();
  installed().reset();
}

HotKey& HotKey::shared() {
  if (!installed()) misuse("HotKey: the shared shortcut was asked for before its environment was installed");
  if (!instance()) instance() = std::make_unique<HotKey>(*installed());
  return *instance();
}

constexpr HotKey::KeyNames HotKey::functionKeyNames{
    {{122, "F1"},  {120, "F2"},  {99, "F3"},   {118, "F4"},  {96, "F5"},   {97, "F6"},   {98, "F7"},
     {100, "F8"},  {101, "F9"},  {109, "F10"}, {103, "F11"}, {111, "F12"}, {105, "F13"}, {107, "F14"},
     {113, "F15"}, {106, "F16"}, {64, "F17"},  {79, "F18"},  {80, "F19"},  {90, "F20"}}};

std::string HotKey::keyName(std::uint32_t keyCode) {
  if (const auto name = find(functionKeyNames, keyCode)) return std::string(*name);
  if (const auto name = find(fixedNames, keyCode)) return std::string(*name);
  return installed() ? installed()->hotKeys.keyboard().keyName(keyCode) : "?";
}

std::string HotKey::displayString(std::uint32_t keyCode, std::uint32_t modifiers) {
  std::string text;
  for (const auto& [bit, symbol] : symbols) {
    if ((modifiers & bit) != 0) text += symbol;
  }
  return text + keyName(keyCode);
}

std::uint32_t HotKey::carbonModifiers(Qt::KeyboardModifiers flags) {
  std::uint32_t mask = 0;
  if (flags.testFlag(Qt::ShiftModifier)) mask |= hotkeys::shiftKey;
  if (flags.testFlag(Qt::ControlModifier)) mask |= hotkeys::controlKey;
  if (flags.testFlag(Qt::AltModifier)) mask |= hotkeys::optionKey;
  if (flags.testFlag(Qt::MetaModifier)) mask |= hotkeys::commandKey;
  return mask;
}

}  // namespace velicor
