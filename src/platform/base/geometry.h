#pragma once

#include <algorithm>
#include <cmath>
#include <compare>

// Points, sizes and rectangles that name the space they live in, so that a value of one space can't be
// handed to code that expects another. Spaces are converted in desktop/screen_layout.h and nowhere else.
namespace velicor {

// Desktop points: one plane for all monitors, origin at the bottom-left corner of the main monitor, y up.
struct DesktopSpace {};
// A view with its origin at the bottom-left corner and y up, in points.
struct FrameSpace {};
// A view with its origin at the top-left corner and y down, in points.
struct ViewSpace {};
// One display, origin at its top-left corner and y down, in points.
struct DisplaySpace {};

template <typename Space>
struct Point {
  double x = 0;
  double y = 0;
  friend bool operator==(const Point&, const Point&) = default;
};

template <typename Space>
struct Size {
  double width = 0;
  double height = 0;
  friend bool operator==(const Size&, const Size&) = default;
};

template <typename Space>
struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  double minX() const { return x; }
  double midX() const { return x + width * 0.5; }
  double maxX() const { return x + width; }
  double minY() const { return y; }
  double midY() const { return y + height * 0.5; }
  double maxY() const { return y + height; }
  bool isEmpty() const { return !(width > 0 && height > 0); }

  // Edges belong to the rectangle on all four sides.
  bool contains(Point<Space> p) const { return p.x >= minX() && p.x <= maxX() && p.y >= minY() && p.y <= maxY(); }

  // Negative amounts grow the rectangle. May leave a negative size: such a rectangle is empty.
  Rect insetBy(double dx, double dy) const { return {x + dx, y + dy, width - 2 * dx, height - 2 * dy}; }

  // The common part, or an empty rectangle at (0, 0) where there is none.
  Rect intersection(const Rect& other) const {
    const double left = std::max(minX(), other.minX());
    const double right = std::min(maxX(), other.maxX());
    const double low = std::max(minY(), other.minY());
    const double high = std::min(maxY(), other.maxY());
    return right > left && high > low ? Rect{left, low, right - left, high - low} : Rect{};
  }

  double area() const { return isEmpty() ? 0 : width * height; }

  friend bool operator==(const Rect&, const Rect&) = default;
};

using DesktopPoint = Point<DesktopSpace>;
using DesktopSize = Size<DesktopSpace>;
using DesktopRect = Rect<DesktopSpace>;
using FramePoint = Point<FrameSpace>;
using FrameRect = Rect<FrameSpace>;
using ViewPoint = Point<ViewSpace>;
using ViewRect = Rect<ViewSpace>;
using DisplayRect = Rect<DisplaySpace>;

// Device pixels of the root window, origin at its top-left corner and y down.
struct DevicePoint {
  int x = 0;
  int y = 0;
  friend bool operator==(const DevicePoint&, const DevicePoint&) = default;
};

struct DeviceRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;

  int right() const { return x + width; }
  int bottom() const { return y + height; }
  bool isEmpty() const { return width <= 0 || height <= 0; }
  bool contains(DevicePoint p) const { return p.x >= x && p.x < right() && p.y >= y && p.y < bottom(); }
  bool contains(const DeviceRect& other) const;

  // The common part, or an empty rectangle at (0, 0) where there is none.
  DeviceRect intersection(const DeviceRect& other) const;
  bool intersects(const DeviceRect& other) const { return !intersection(other).isEmpty(); }
  DeviceRect translatedBy(int dx, int dy) const { return {x + dx, y + dy, width, height}; }

  friend bool operator==(const DeviceRect&, const DeviceRect&) = default;
};

// To the nearest integer, halves away from zero. Windows, capture and colour bytes all round this way.
inline int roundHalfAway(double value) { return static_cast<int>(std::lround(value)); }

}  // namespace velicor
