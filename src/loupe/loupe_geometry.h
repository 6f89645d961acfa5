#pragma once

#include <array>

#include "platform/base/geometry.h"

// Where things are on the loupe, and what a drag does to its frame. Pure functions.
namespace velicor {

// The parts of the loupe frame by which the mouse takes hold of it.
enum class LoupeZone {
  move,
  left,
  right,
  top,
  bottom,
  topLeft,
  topRight,
  bottomLeft,
  bottomRight,
  panelButton
};

namespace loupe_geometry {

// The loupe never gets narrower or lower than this.
inline constexpr double minimumSide = 60;

// Width of the edge bands of a large loupe.
inline constexpr double margin = 10;

// The band along the edges in which an unlocked loupe takes the mouse.
inline constexpr double mouseBand = 24;

// The two chips, in a view with these bounds.
FrameRect moveChip(const FrameRect& bounds);
FrameRect panelChip(const FrameRect& bounds);

// Centres of the eight resize handles, from the bottom row to the top one, left to right.
std::array<FramePoint, 8> handlePoints(const FrameRect& bounds);

// The zone at a point. Corners win over chips, chips over bands. A small loupe has no interior to move it by.
LoupeZone zoneAt(FramePoint point, const FrameRect& bounds);

// The frame that a drag by `delta` (y up) makes of the frame at its start. The edge opposite to the dragged
// one stays; no side gets below the minimum.
DesktopRect draggedFrame(LoupeZone zone, DesktopSize delta, const DesktopRect& start);

// The frame that a window with the minimum size takes instead of `wanted`, coming from `current`: the edge
// that is not being dragged stays where it is.
DesktopRect keepingMinimum(DesktopRect wanted, const DesktopRect& current);

// Whether the loupe takes the mouse at this point, rather than letting it through to what lies below.
bool takesMouse(DesktopPoint mouse, const DesktopRect& frame, bool locked, bool overPanelChip);

}  // namespace loupe_geometry
}  // namespace velicor
