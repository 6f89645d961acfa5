#include "menubar/hot_key.h"

#include <limits>
#include <string>
#include <utility>

#include "platform/dispatch/main_queue.h"
#include "platform/log/log.h"

namespace velicor {

namespace {

// A stored value that has the 32 bits of a code or a mask.
std::optional<std::uint32_t> stored(const settings::Settings& settings, std::string_view key) {
  const std::optional<std::int64_t> value = settings.integer(key);
  const bool usable = value && *value >= 0 && *value <= std::numeric_limits<std::uint32_t>::max();
  return usable ? std::optional(static_cast<std::uint32_t>(*value)) : std::nullopt;
}

}  // namespace

HotKey::HotKey(Environment environment)
    : hotKeys_(environment.hotKeys), life_(std::make_shared<HotKey*>(this)) {
  restore(environment.settings);
  layoutChanges_ = hotKeys_.keyboard().changed.subscribe([this] { displayChanged(); });
}

void HotKey::restore(const settings::Settings& settings) {
  const auto keyCode = stored(settings, keyCodeSetting);
  if (!keyCode) return;
  const auto modifiers = stored(settings, modifiersSetting);
  if (!modifiers) return;
  keyCode_ = *keyCode;
  modifiers_ = *modifiers;
}

void HotKey::setKeyCode(std::uint32_t keyCode) {
  keyCode_ = keyCode;
  displayChanged();
}

void HotKey::setModifiers(std::uint32_t modifiers) {
  modifiers_ = modifiers;
  displayChanged();
}

void HotKey::registerHotKey() {
  installHandlerIfNeeded();
  ref_.reset();
  auto registration = hotKeys_.registerHotKey(keyCode_, modifiers_);
  if (!registration) {
    const int status = registration.error().code;
    return log::general("Velicor: could not register hot key (status " + std::to_string(status) + ")");
  }
  ref_.emplace(std::move(*registration));
}

void HotKey::installHandlerIfNeeded() {
  if (handler_.isActive()) return;
  handler_ = hotKeys_.pressed.subscribe([this] { schedule(); });
}

void HotKey::schedule() {
  dispatch::MainQueue::shared().async([life = std::weak_ptr(life_)] {
    const auto self = life.lock();
    if (!self || !(*self)->onTrigger) return;
    // May be replaced, or the whole shortcut go, during the call.
    const auto trigger = (*self)->onTrigger;
    trigger();
  });
}

}  // namespace velicor
