#pragma once

#include <optional>
#include <vector>

#include "platform/desktop/screen.h"

// Whether users can get at a window, and what is done for one that a change of screens has taken away. Pure functions.
namespace velicor::desktop {

// The main screen, or the first one where none is; none without screens.
std::optional<Screen> mainOrFirst(const ScreenList& list);

// Whether enough of it lies on one of the screens for the mouse to take hold of it.
bool isWithinReach(const DesktopRect& window, const std::vector<Screen>& screens);

// Where a window goes that is not whole on any of the screens: into the visible frame of the one that shows most of it,
// else of `refuge`. None where it is whole.
std::optional<DesktopRect> madeWhole(const DesktopRect& window, const std::vector<Screen>& screens,
                                     const Screen& refuge);

}  // namespace velicor::desktop
