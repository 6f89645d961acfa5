#pragma once

#include <optional>

#include <Qt>

#include "loupe/loupe_geometry.h"

// What the keys do to the loupe. Pure functions.
namespace velicor::loupe_keys {

// A drag of one step: by which part, and how far (points, y up).
struct Step {
  LoupeZone zone = LoupeZone::move;
  DesktopSize delta;
  friend bool operator==(const Step&, const Step&) = default;
};

// Arrows move it by 1 point, with Shift by 10. With Control they move its right and its bottom edge instead. None
// for any other key, and with any other modifier.
std::optional<Step> stepFor(int key, Qt::KeyboardModifiers modifiers);

}  // namespace velicor::loupe_keys
