#include "platform/gpu/native/rasterizer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velicor::gpu {

namespace {

// A vertex in pixels of the target, y down.
struct Corner {
  double x;
  double y;
  double u;
  double v;
};

Corner inPixels(const NativeVertex& vertex, const NativeImage& target) {
  return {(double{vertex.x} + 1) * 0.5 * target.width, (1 - double{vertex.y}) * 0.5 * target.height,
          double{vertex.u}, double{vertex.v}};
}

// value(x, y) = atOrigin + dx · x + dy · y
struct Plane {
  double atOrigin;
  double dx;
  double dy;

  double at(double x, double y) const { return atOrigin + dx * x + dy * y; }
};

Plane planeThrough(const std::array<Corner, 3>& c, double Corner::*value, double doubleArea) {
  const double along1 = c[1].*value - c[0].*value;
  const double along2 = c[2].*value - c[0].*value;
  const double dx = (along1 * (c[2].y - c[0].y) - along2 * (c[1].y - c[0].y)) / doubleArea;
  const double dy = (along2 * (c[1].x - c[0].x) - along1 * (c[2].x - c[0].x)) / doubleArea;
  return {c[0].*value - dx * c[0].x - dy * c[0].y, dx, dy};
}

// First pixel whose centre is not before the position, within 0…limit.
int firstPixel(double position, int limit) {
  return static_cast<int>(std::clamp(std::ceil(position - 0.5), 0.0, static_cast<double>(limit)));
}

// Where the horizontal line at y crosses the triangle: left and right end, equal where it misses.
std::array<double, 2> crossing(const std::array<Corner, 3>& c, double y) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  std::array<double, 2> ends{infinity, -infinity};
  for (std::size_t i = 0; i < 3; ++i) {
    const Corner& a = c[i];
    const Corner& b = c[(i + 1) % 3];
    if ((a.y <= y) == (b.y <= y)) continue;
    const double x = a.x + (b.x - a.x) * ((y - a.y) / (b.y - a.y));
    ends = {std::min(ends[0], x), std::max(ends[1], x)};
  }
  return ends[0] <= ends[1] ? ends : std::array<double, 2>{0, 0};
}

}  // namespace

void forEachSpan(const Triangle& triangle, const NativeImage& target,
                 const std::function<void(const FragmentSpan&)>& draw) {
  forEachSpan(triangle, target, 0, target.height, draw);
}

void forEachSpan(const Triangle& triangle, const NativeImage& target, int firstRow, int endRow,
                 const std::function<void(const FragmentSpan&)>& draw) {
  const std::array<Corner, 3> c{inPixels(triangle[0], target), inPixels(triangle[1], target),
                                inPixels(triangle[2], target)};
  const double doubleArea = (c[1].x - c[0].x) * (c[2].y - c[0].y) - (c[2].x - c[0].x) * (c[1].y - c[0].y);
  // Not a number, or no area: covers nothing.
  if (!(std::abs(doubleArea) > 0) || !std::isfinite(doubleArea)) return;
  const Plane u = planeThrough(c, &Corner::u, doubleArea);
  const Plane v = planeThrough(c, &Corner::v, doubleArea);
  const int top = std::max(firstPixel(std::min({c[0].y, c[1].y, c[2].y}), target.height), firstRow);
  const int bottom = std::min(firstPixel(std::max({c[0].y, c[1].y, c[2].y}), target.height), endRow);
  for (int y = top; y < bottom; ++y) {
    const double centre = y + 0.5;
    const auto [left, right] = crossing(c, centre);
    const int begin = firstPixel(left, target.width);
    const int end = firstPixel(right, target.width);
    if (begin >= end) continue;
    draw({target, y, begin, end, u.at(begin + 0.5, centre), v.at(begin + 0.5, centre), u.dx, v.dx, v.dy});
  }
}

}  // namespace velicor::gpu
