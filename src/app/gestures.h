#pragma once

#include <span>
#include <string_view>

// What keys and mouse do, where: the table that the help panel shows and the manual page prints, and that the README
// has too. Plain data; any thread.
namespace velicor {

struct Gesture {
  std::string_view how;   // "Shift + arrows"
  std::string_view what;  // a phrase: "move it by 10 points"
};

struct GestureGroup {
  std::string_view place;
  std::span<const Gesture> gestures;
};

// In the order of the texts.
std::span<const GestureGroup> gestureGroups();

// How the global shortcut is called in the table; users can change it.
inline constexpr std::string_view globalShortcut = "Control + Alt + Super + S";

}  // namespace velicor
