#include "platform/desktop/struts.h"

#include <algorithm>

namespace velicor::desktop {

namespace {

// No screen reaches farther. What a bar claims beyond is held, so that sums stay within their range.
constexpr std::uint32_t largestCoordinate = 0xffff;

bool touches(const Strut::Side& side, int low, int high) {
  return side.depth > 0 && side.start < high && side.end >= low;
}

}  // namespace

Strut readStrut(const std::vector<std::uint32_t>& numbers, const DeviceRect& root) {
  if (numbers.size() != 4 && numbers.size() != 12) return {};
  const auto number = [&](std::size_t index) {
    return static_cast<int>(std::min(numbers[index], largestCoordinate));
  };
  const auto side = [&](std::size_t index, int length) {
    if (numbers.size() == 4) return Strut::Side{number(index), 0, length - 1};
    return Strut::Side{number(index), number(4 + 2 * index), number(5 + 2 * index)};
  };
  return {side(0, root.height), side(1, root.height), side(2, root.width), side(3, root.width)};
}

DeviceRect withoutStruts(const DeviceRect& monitor, const DeviceRect& root,
                         const std::vector<Strut>& struts) {
  int left = monitor.x;
  int right = monitor.right();
  int top = monitor.y;
  int bottom = monitor.bottom();
  for (const Strut& strut : struts) {
    // A strip that would swallow the whole monitor belongs to a neighbour farther out.
    const auto inside = [](int edge, int low, int high) { return edge > low && edge < high; };
    const bool acrossRows = touches(strut.left, monitor.y, monitor.bottom());
    const bool acrossRowsRight = touches(strut.right, monitor.y, monitor.bottom());
    const bool acrossColumns = touches(strut.top, monitor.x, monitor.right());
    const bool acrossColumnsBottom = touches(strut.bottom, monitor.x, monitor.right());
    const int fromLeft = root.x + strut.left.depth;
    const int fromRight = root.right() - strut.right.depth;
    const int fromTop = root.y + strut.top.depth;
    const int fromBottom = root.bottom() - strut.bottom.depth;
    if (acrossRows && inside(fromLeft, monitor.x, monitor.right())) left = std::max(left, fromLeft);
    if (acrossRowsRight && inside(fromRight, monitor.x, monitor.right())) right = std::min(right, fromRight);
    if (acrossColumns && inside(fromTop, monitor.y, monitor.bottom())) top = std::max(top, fromTop);
    if (acrossColumnsBottom && inside(fromBottom, monitor.y, monitor.bottom()))
      bottom = std::min(bottom, fromBottom);
  }
  return {left, top, std::max(0, right - left), std::max(0, bottom - top)};
}

}  // namespace velicor::desktop
