#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <QTimer>

#include "platform/base/error.h"
#include "platform/hotkeys/keyboard.h"
#include "platform/notifications/signal.h"

namespace velicor::desktop {
class Desktop;
class DisplayServer;
struct ServerEvent;
}  // namespace velicor::desktop

namespace velicor::hotkeys {

class KeyGrab;

// The domain of the errors that the service itself finds. Those of the X server keep theirs; no code is 0.
inline constexpr std::string_view errorDomain = "velicor.hotkeys";

enum ErrorCode : int {
  noSuchKey = -1,     // no key of the keyboard has this code
  alreadyTaken = 10,  // some program has the combination; the server's own code for that
};

// Key combinations of ours that work whichever program has the keyboard. Such a press reaches nobody else.
// What has all of the keyboard for itself, such as an open menu, keeps it from us meanwhile. Main thread;
// outlived by the desktop.
class HotKeys {
 public:
  // Ends with its destruction; before the service does.
  class Registration {
   public:
    explicit Registration(std::shared_ptr<KeyGrab> grab) : grab_(std::move(grab)) {}
    Registration(Registration&&) = default;
    Registration& operator=(Registration&&) = default;
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

   private:
    std::shared_ptr<KeyGrab> grab_;
  };

  explicit HotKeys(desktop::Desktop& desktop);
  ~HotKeys();
  HotKeys(const HotKeys&) = delete;
  HotKeys& operator=(const HotKeys&) = delete;

  Keyboard& keyboard() { return keyboard_; }

  // Takes the key at a position (key_codes.h) with exactly these modifiers (bits of ModifierMask, others are
  // ignored), whatever caps lock, num lock and scroll lock are. A few round trips. On failure nothing is
  // taken; the error's code tells why.
  //
  // A registration follows the keyboard when other keys become its modifiers. Where another program has the
  // combination by then, the log says so and the registration is without effect.
  Result<Registration> registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers);

  // A registered combination was pressed: once until it is let go, however long that takes.
  Signal<> pressed;

 private:
  void handle(const desktop::ServerEvent& event);
  void followKeyboard();
  bool isDown(std::uint8_t keycode);
  void awaitRelease(std::uint8_t keycode);
  void lookForRelease();
  std::vector<std::shared_ptr<KeyGrab>> grabs();

  desktop::DisplayServer& server_;
  Keyboard keyboard_;
  std::vector<std::weak_ptr<KeyGrab>> grabs_;
  std::optional<std::uint8_t> held_;  // the key whose repeated presses don't count
  QTimer releaseWatch_;
  bool seenUp_ = false;
  Subscription events_;
  Subscription keyboardChanges_;
};

}  // namespace velicor::hotkeys
