#include "loupe/loupe_geometry.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace velicor::loupe_geometry {

namespace {

constexpr double chipSide = 16;
constexpr double largestCorner = 14;
constexpr double smallLoupe = 100;

// A difference of position below this is noise of the arithmetic, not a drag of that edge.
constexpr double positionTolerance = 0.01;

std::optional<LoupeZone> cornerAt(FramePoint p, const FrameRect& bounds, double corner) {
  const bool nearBottom = p.y < corner;
  const bool nearTop = p.y > bounds.maxY() - corner;
  if (!nearBottom && !nearTop) return std::nullopt;
  if (p.x < corner) return nearBottom ? LoupeZone::bottomLeft : LoupeZone::topLeft;
  if (p.x > bounds.maxX() - corner) return nearBottom ? LoupeZone::bottomRight : LoupeZone::topRight;
  return std::nullopt;
}

LoupeZone smallLoupeZone(FramePoint p, const FrameRect& bounds) {
  const double dx = (p.x - bounds.midX()) / std::max(bounds.width * 0.5, 1.0);
  const double dy = (p.y - bounds.midY()) / std::max(bounds.height * 0.5, 1.0);
  const double ax = std::abs(dx);
  const double ay = std::abs(dy);
  if (2 * ay < ax) return dx < 0 ? LoupeZone::left : LoupeZone::right;
  if (2 * ax < ay) return dy < 0 ? LoupeZone::bottom : LoupeZone::top;
  if (dx < 0) return dy < 0 ? LoupeZone::bottomLeft : LoupeZone::topLeft;
  return dy < 0 ? LoupeZone::bottomRight : LoupeZone::topRight;
}

LoupeZone largeLoupeZone(FramePoint p, const FrameRect& bounds, double band) {
  if (p.x < band) return LoupeZone::left;
  if (p.x > bounds.maxX() - band) return LoupeZone::right;
  if (p.y < band) return LoupeZone::bottom;
  if (p.y > bounds.maxY() - band) return LoupeZone::top;
  return LoupeZone::move;
}

bool isLeft(LoupeZone z) {
  return z == LoupeZone::left || z == LoupeZone::topLeft || z == LoupeZone::bottomLeft;
}
bool isRight(LoupeZone z) {
  return z == LoupeZone::right || z == LoupeZone::topRight || z == LoupeZone::bottomRight;
}
bool isTop(LoupeZone z) { return z == LoupeZone::top || z == LoupeZone::topLeft || z == LoupeZone::topRight; }
bool isBottom(LoupeZone z) {
  return z == LoupeZone::bottom || z == LoupeZone::bottomLeft || z == LoupeZone::bottomRight;
}

// One direction of the minimum size: moves the origin only where the origin's edge is the dragged one.
void keepMinimum(double& origin, double& side, double currentOrigin) {
  if (side >= minimumSide) return;
  if (std::abs(origin - currentOrigin) > positionTolerance) origin += side - minimumSide;
  side = minimumSide;
}

}  // namespace

FrameRect moveChip(const FrameRect& bounds) {
  return {bounds.maxX() - 21, bounds.maxY() - 21, chipSide, chipSide};
}

FrameRect panelChip(const FrameRect& bounds) {
  return {bounds.maxX() - 41, bounds.maxY() - 21, chipSide, chipSide};
}

std::array<FramePoint, 8> handlePoints(const FrameRect& bounds) {
  const FrameRect in = bounds.insetBy(2, 2);
  return {{{in.minX(), in.minY()},
           {bounds.midX(), in.minY()},
           {in.maxX(), in.minY()},
           {in.minX(), bounds.midY()},
           {in.maxX(), bounds.midY()},
           {in.minX(), in.maxY()},
           {bounds.midX(), in.maxY()},
           {in.maxX(), in.maxY()}}};
}

LoupeZone zoneAt(FramePoint p, const FrameRect& bounds) {
  const double smaller = std::min(bounds.width, bounds.height);
  const double third = smaller / 3;
  if (const auto corner = cornerAt(p, bounds, std::min(third, largestCorner))) return *corner;
  if (panelChip(bounds).contains(p)) return LoupeZone::panelButton;
  if (moveChip(bounds).contains(p)) return LoupeZone::move;
  if (smaller < smallLoupe) return smallLoupeZone(p, bounds);
  return largeLoupeZone(p, bounds, std::min(third, margin));
}

DesktopRect draggedFrame(LoupeZone zone, DesktopSize delta, const DesktopRect& start) {
  DesktopRect frame = start;
  if (zone == LoupeZone::move)
    return {start.x + delta.width, start.y + delta.height, start.width, start.height};
  if (isLeft(zone)) {
    const double step = std::min(start.width - minimumSide, delta.width);
    frame.x += step;
    frame.width -= step;
  } else if (isRight(zone)) {
    frame.width = std::max(start.width + delta.width, minimumSide);
  }
  if (isTop(zone)) {
    frame.height = std::max(start.height + delta.height, minimumSide);
  } else if (isBottom(zone)) {
    const double step = std::min(start.height - minimumSide, delta.height);
    frame.y += step;
    frame.height -= step;
  }
  return frame;
}

DesktopRect keepingMinimum(DesktopRect wanted, const DesktopRect& current) {
  keepMinimum(wanted.x, wanted.width, current.x);
  keepMinimum(wanted.y, wanted.height, current.y);
  return wanted;
}

bool takesMouse(DesktopPoint mouse, const DesktopRect& frame, bool locked, bool overPanelChip) {
  if (locked) return overPanelChip;
  if (!frame.contains(mouse)) return false;
  const DesktopRect interior = frame.insetBy(mouseBand, mouseBand);
  return interior.isEmpty() || !interior.contains(mouse);
}

}  // namespace velicor::loupe_geometry
