#include "platform/desktop/reach.h"

#include <algorithm>

namespace velicor::desktop {

namespace {

constexpr double holdable = 24;  // points in each direction
constexpr double noise = 0.5;    // of windows that end on whole pixels

DesktopRect seen(const DesktopRect& window, const Screen& screen) { return window.intersection(screen.frame); }

bool isWhole(const DesktopRect& window, const std::vector<Screen>& screens) {
  return std::ranges::any_of(screens, [&window](const Screen& screen) {
    const DesktopRect part = seen(window, screen);
    return part.width > window.width - noise && part.height > window.height - noise;
  });
}

// The upper and the left edge win where it doesn't fit.
DesktopRect movedInto(const DesktopRect& room, DesktopRect window) {
  window.x = std::max(room.minX(), std::min(window.x, room.maxX() - window.width));
  window.y = std::min(room.maxY() - window.height, std::max(window.y, room.minY()));
  return window;
}

}  // namespace

std::optional<Screen> mainOrFirst(const ScreenList& list) {
  if (auto main = list.mainScreen()) return main;
  const std::vector<Screen> all = list.screens();
  return all.empty() ? std::nullopt : std::optional(all.front());
}

bool isWithinReach(const DesktopRect& window, const std::vector<Screen>& screens) {
  return std::ranges::any_of(screens, [&window](const Screen& screen) {
    const DesktopRect part = seen(window, screen);
    return part.width >= std::min(holdable, window.width) && part.height >= std::min(holdable, window.height);
  });
}

std::optional<DesktopRect> madeWhole(const DesktopRect& window, const std::vector<Screen>& screens,
                                     const Screen& refuge) {
  if (isWhole(window, screens)) return std::nullopt;
  const Screen* best = &refuge;
  for (const Screen& screen : screens) {
    if (seen(window, screen).area() > seen(window, *best).area()) best = &screen;
  }
  return movedInto(best->visibleFrame, window);
}

}  // namespace velicor::desktop
