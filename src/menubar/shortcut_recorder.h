#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "controls/utility_panel.h"
#include "platform/settings/settings.h"

namespace velicor {

// The window in which the user presses a new combination for HotKey::shared(): applied, registered and stored
// at once. Hidden until show(). Main thread.
class ShortcutRecorder {
 public:
  // Called after every change, with the window still open; may destroy the recorder. The references outlive
  // it.
  ShortcutRecorder(desktop::Desktop& desktop, settings::Settings& settings, std::function<void()> onChange);
  ~ShortcutRecorder();
  ShortcutRecorder(const ShortcutRecorder&) = delete;
  ShortcutRecorder& operator=(const ShortcutRecorder&) = delete;

  // In the middle of the screen, in front, and with the keyboard directed at it, whichever program is active.
  void show();

  controls::UtilityPanel& panel() const { return *panel_; }

 private:
  static void apply(const std::weak_ptr<ShortcutRecorder*>& recorder, settings::Settings& settings,
                    std::uint32_t keyCode, std::uint32_t modifiers);

  const std::function<void()> onChange_;
  std::unique_ptr<controls::UtilityPanel> panel_;
  std::shared_ptr<ShortcutRecorder*> life_;  // what the view's closures find the object by
};

}  // namespace velicor
