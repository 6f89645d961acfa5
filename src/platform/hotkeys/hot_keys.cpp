#include "platform/hotkeys/hot_keys.h"

#include <algorithm>
#include <utility>

#include "platform/desktop/desktop.h"
#include "platform/desktop/display_server.h"
#include "platform/hotkeys/key_codes.h"
#include "platform/hotkeys/key_grab.h"
#include "platform/log/log.h"

namespace velicor::hotkeys {

HotKeys::HotKeys(desktop::Desktop& desktop) : server_(desktop.server()), keyboard_(server_) {
  events_ = server_.event.subscribe([this](const desktop::ServerEvent& event) { handle(event); });
  keyboardChanges_ = keyboard_.changed.subscribe([this] { followKeyboard(); });
  constexpr int releaseCheck = 20;  // milliseconds
  releaseWatch_.setInterval(releaseCheck);
  releaseWatch_.callOnTimeout(&releaseWatch_, [this] { lookForRelease(); });
}

HotKeys::~HotKeys() = default;

Result<HotKeys::Registration> HotKeys::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers) {
  const auto keycode = serverKeycode(keyCode);
  if (!keycode) return failure(errorDomain, noSuchKey, "No key has the code " + std::to_string(keyCode));
  auto grab = std::make_shared<KeyGrab>(server_.connection(), *keycode, modifiers);
  // The server lets one client take the same combination twice, and give it up for both.
  const bool own = std::ranges::any_of(
      grabs(), [&](const auto& other) { return grab->isSameAs(*other, keyboard_.modifiers()); });
  if (own) return failure(errorDomain, alreadyTaken, "The combination is registered already");
  if (const Status taken = grab->take(keyboard_.modifiers()); !taken)
    return tl::make_unexpected(taken.error());
  grabs_.push_back(grab);
  if (isDown(*keycode)) awaitRelease(*keycode);
  return Registration(std::move(grab));
}

std::vector<std::shared_ptr<KeyGrab>> HotKeys::grabs() {
  std::erase_if(grabs_, [](const auto& grab) { return grab.expired(); });
  std::vector<std::shared_ptr<KeyGrab>> living;
  for (const auto& grab : grabs_)
    living.push_back(grab.lock());
  return living;
}

void HotKeys::handle(const desktop::ServerEvent& event) {
  if (event.type() == XCB_KEY_RELEASE) {
    if (held_ == event.as<xcb_key_release_event_t>().detail) held_.reset();
    return;
  }
  if (event.type() != XCB_KEY_PRESS) return;
  const auto& press = event.as<xcb_key_press_event_t>();
  const bool registered = std::ranges::any_of(
      grabs(), [&](const auto& grab) { return grab->matches(press, keyboard_.modifiers()); });
  if (!registered || held_ == press.detail) return;
  held_ = press.detail;
  pressed();
}

void HotKeys::followKeyboard() {
  for (const auto& grab : grabs()) {
    if (const Status taken = grab->take(keyboard_.modifiers()); !taken) {
      log::Logger("hotkeys").error("a shortcut could not follow the keyboard: " + taken.error().description);
    }
  }
}

bool HotKeys::isDown(std::uint8_t keycode) {
  const auto keys = server_.connection().reply(xcb_query_keymap_reply, xcb_query_keymap(server_.raw()));
  return keys && ((*keys)->keys[keycode / 8] >> (keycode % 8) & 1) != 0;
}

// Who has just recorded a combination still holds it down. Its repeated presses come to us as soon as it is
// registered; when it is let go we are told only if there was one.
void HotKeys::awaitRelease(std::uint8_t keycode) {
  held_ = keycode;
  seenUp_ = false;
  releaseWatch_.start();
}

// Up at two looks: at the first, presses from before it may still wait to be handled.
void HotKeys::lookForRelease() {
  const bool wasUp = std::exchange(seenUp_, !held_ || !isDown(*held_));
  if (!wasUp || !seenUp_) return;
  held_.reset();
  releaseWatch_.stop();
}

}  // namespace velicor::hotkeys
