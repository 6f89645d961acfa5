#include "platform/screencapture/frame_geometry.h"

namespace velicor::screencapture {

namespace {

double pixelsPerPoint(double stated, int pixels, double points) {
  if (stated > 0) return stated;
  return points > 0 ? pixels / points : 1;
}

}  // namespace

DeviceRect frameRect(const StreamConfiguration& configuration, const DeviceRect& monitor) {
  const DisplayRect& source = configuration.sourceRect;
  const double across = pixelsPerPoint(configuration.pixelsPerPoint, configuration.width, source.width);
  const double down = pixelsPerPoint(configuration.pixelsPerPoint, configuration.height, source.height);
  return {monitor.x + roundHalfAway(source.x * across), monitor.y + roundHalfAway(source.y * down),
          configuration.width, configuration.height};
}

}  // namespace velicor::screencapture
