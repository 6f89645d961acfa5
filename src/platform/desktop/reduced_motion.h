#pragma once

#include <optional>
#include <string_view>

// Whether things may move on the screen.
namespace velicor::desktop {

// Whether the user has switched animations off: the setting "Gtk/EnableAnimations" that the desktop's settings
// daemon publishes on the X server, read anew by each call (a round trip or two). false where nothing is
// published. Main thread.
bool prefersReducedMotion();

// An integer by its name in the settings that such a daemon publishes; none where it isn't there, is no
// integer, or the bytes end early. Any thread.
std::optional<int> publishedInteger(std::string_view settings, std::string_view name);

}  // namespace velicor::desktop
