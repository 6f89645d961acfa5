#include "loupe/loupe_keys.h"

namespace velicor::loupe_keys {

namespace {

constexpr double smallStep = 1;
constexpr double largeStep = 10;

std::optional<DesktopSize> directionOf(int key) {
  switch (key) {
    case Qt::Key_Left:
      return DesktopSize{-1, 0};
    case Qt::Key_Right:
      return DesktopSize{1, 0};
    case Qt::Key_Up:
      return DesktopSize{0, 1};
    case Qt::Key_Down:
      return DesktopSize{0, -1};
    default:
      return std::nullopt;
  }
}

}  // namespace

std::optional<Step> stepFor(int key, Qt::KeyboardModifiers modifiers) {
  const auto direction = directionOf(key);
  const Qt::KeyboardModifiers meant = modifiers & ~Qt::KeypadModifier;
  if (!direction || (meant & ~(Qt::ShiftModifier | Qt::ControlModifier))) return std::nullopt;
  const double length = meant.testFlag(Qt::ShiftModifier) ? largeStep : smallStep;
  const DesktopSize delta{direction->width * length, direction->height * length};
  if (!meant.testFlag(Qt::ControlModifier)) return Step{LoupeZone::move, delta};
  return Step{delta.width != 0 ? LoupeZone::right : LoupeZone::bottom, delta};
}

}  // namespace velicor::loupe_keys
