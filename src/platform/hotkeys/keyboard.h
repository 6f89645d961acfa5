#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/hotkeys/modifier_map.h"
#include "platform/notifications/signal.h"

namespace velicor::desktop {
class DisplayServer;
struct ServerEvent;
}  // namespace velicor::desktop

namespace velicor::hotkeys {

class Keymap;

// The keyboard as it is set up now: what its keys are called and which of them are modifiers. Main thread.
class Keyboard {
 public:
  explicit Keyboard(desktop::DisplayServer& server);
  ~Keyboard();
  Keyboard(const Keyboard&) = delete;
  Keyboard& operator=(const Keyboard&) = delete;

  // What the key at a position (key_codes.h) types without modifiers in the current layout, in upper case and
  // UTF-8. "?" for keys that type nothing visible, and on servers that don't tell their layout (the log has
  // said so).
  std::string keyName(std::uint32_t keyCode) const;

  const ModifierMap& modifiers() const { return modifiers_; }

  // Another layout was chosen, or keys have another meaning now.
  Signal<> changed;

 private:
  void listen();
  void handle(const desktop::ServerEvent& event);
  void readSoon();
  void read();

  desktop::DisplayServer& server_;
  std::uint8_t firstEvent_ = 0;  // of the keyboard extension; 0 without it
  std::unique_ptr<Keymap> keymap_;
  std::uint32_t layout_ = 0;  // the chosen one of the keymap's layouts
  ModifierMap modifiers_;
  std::shared_ptr<Keyboard*> awaited_;  // while a reading is due
  Subscription events_;
};

}  // namespace velicor::hotkeys
