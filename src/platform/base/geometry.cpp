#include "platform/base/geometry.h"

namespace velicor {

bool DeviceRect::contains(const DeviceRect& other) const {
  return other.x >= x && other.y >= y && other.right() <= right() && other.bottom() <= bottom();
}

DeviceRect DeviceRect::intersection(const DeviceRect& other) const {
  const int left = std::max(x, other.x);
  const int top = std::max(y, other.y);
  const int width_ = std::min(right(), other.right()) - left;
  const int height_ = std::min(bottom(), other.bottom()) - top;
  return width_ > 0 && height_ > 0 ? DeviceRect{left, top, width_, height_} : DeviceRect{};
}

}  // namespace velicor
