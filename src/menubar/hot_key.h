#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <qnamespace.h>

#include "platform/hotkeys/hot_keys.h"
#include "platform/hotkeys/modifier_mask.h"
#include "platform/notifications/signal.h"
#include "platform/settings/settings.h"

namespace velicor {

// The program's global shortcut: a key, by its position on the keyboard, and a mask of hotkeys::ModifierMask.
// Main thread.
class HotKey {
 public:
  // What the shortcut stands on. Outlives it.
  struct Environment {
    settings::Settings& settings;
    hotkeys::HotKeys& hotKeys;
  };

  // Makes `shared` available while it lives, and the current layout to the names of keys; destroys the shared
  // shortcut with itself: kept by main().
  class Installation {
   public:
    explicit Installation(Environment environment);
    ~Installation();
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;
  };

  // The default combination, ⌃⌥⌘S, and where another one is stored.
  static constexpr std::uint32_t defaultKeyCode = 1;
  static constexpr std::uint32_t defaultModifiers =
      hotkeys::controlKey | hotkeys::optionKey | hotkeys::commandKey;
  static constexpr std::string_view keyCodeSetting = "hotKeyCode";
  static constexpr std::string_view modifiersSetting = "hotKeyModifiers";

  // The program's one shortcut, made at the first call. Without an installation the process ends with a log
  // line.
  static HotKey& shared();

  // Restores the stored combination. It takes two integers of 32 bits, else the default stays, without a
  // word. Nothing is registered yet.
  explicit HotKey(Environment environment);
  HotKey(const HotKey&) = delete;
  HotKey& operator=(const HotKey&) = delete;

  // Called on a later turn of the event loop than the press.
  std::function<void()> onTrigger;

  // Setting them changes what is shown; what is registered changes with registerHotKey().
  std::uint32_t keyCode() const { return keyCode_; }
  void setKeyCode(std::uint32_t keyCode);
  std::uint32_t modifiers() const { return modifiers_; }
  void setModifiers(std::uint32_t modifiers);

  // Registers the combination instead of the one registered before. A refusal goes to the general log, with
  // its code (hotkeys::ErrorCode, or the X server's); the shortcut then does nothing until this is called
  // again and succeeds.
  void registerHotKey();
  bool isRegistered() const { return ref_.has_value(); }

  // The text of displayString for this shortcut may be another one now: the combination or the keyboard's
  // layout has changed.
  Signal<> displayChanged;

  // Such as "⌃⌥⌘S": the modifiers' symbols, always in this order with ⇧ between ⌥ and ⌘, and the key's name.
  static std::string displayString(std::uint32_t keyCode, std::uint32_t modifiers);

  // What is printed on a key in the current layout; "?" where nothing is or nobody knows.
  static std::string keyName(std::uint32_t keyCode);

  // The function keys' codes and names, which hold in every layout.
  using KeyNames = std::array<std::pair<std::uint32_t, std::string_view>, 20>;
  static const KeyNames functionKeyNames;

  // The mask for the modifiers of a key event: Meta (the Super key) is command, Control control, Alt option,
  // Shift shift. Others, such as the keypad's, are dropped.
  static std::uint32_t carbonModifiers(Qt::KeyboardModifiers flags);

 private:
  void restore(const settings::Settings& settings);
  void installHandlerIfNeeded();
  void schedule();

  hotkeys::HotKeys& hotKeys_;
  std::uint32_t keyCode_ = defaultKeyCode;
  std::uint32_t modifiers_ = defaultModifiers;
  std::optional<hotkeys::HotKeys::Registration> ref_;
  Subscription handler_;
  Subscription layoutChanges_;
  std::shared_ptr<HotKey*> life_;  // what scheduled calls find the object by
};

}  // namespace velicor
