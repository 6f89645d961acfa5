#include "capture/stream_configuration.h"

#include <algorithm>
#include <iterator>

#include <unistd.h>

#include "platform/base/product.h"

namespace velicor {

namespace {

constexpr double smallestSide = 2;
constexpr int framesInUse = 3;

DisplayRect sourceRect(const DesktopRect& region, const DesktopRect& frame) {
  const DisplayRect local{region.minX() - frame.minX(), frame.maxY() - region.maxY(), region.width,
                          region.height};
  DisplayRect clipped = local.intersection({0, 0, frame.width, frame.height});
  // A common part's sides are differences of edges. One that isn't cut keeps its exact length: at half a pixel
  // the rounding error would cost the whole one, and the frame would be narrower than the region's window.
  if (local.minX() >= 0 && local.maxX() <= frame.width) clipped.width = local.width;
  if (local.minY() >= 0 && local.maxY() <= frame.height) clipped.height = local.height;
  if (clipped.width < smallestSide || clipped.height < smallestSide)
    return {0, 0, smallestSide, smallestSide};
  return clipped;
}

int pixels(double points, double scale) { return std::max(2, roundHalfAway(points * scale)); }

bool isOwn(const screencapture::RunningApplication& application) {
  return application.processID == getpid() || application.bundleIdentifier == product::identifier;
}

}  // namespace

screencapture::StreamConfiguration streamConfiguration(const DesktopRect& region,
                                                       const desktop::Screen& screen, int fps) {
  screencapture::StreamConfiguration configuration;
  configuration.sourceRect = sourceRect(region, screen.frame);
  configuration.width = pixels(configuration.sourceRect.width, screen.backingScaleFactor);
  configuration.height = pixels(configuration.sourceRect.height, screen.backingScaleFactor);
  configuration.pixelsPerPoint = screen.backingScaleFactor;
  configuration.pixelFormat = screencapture::PixelFormat::bgra32;
  configuration.colorSpace = screencapture::ColorSpace::sRGB;
  configuration.minimumFrameInterval = {1, std::max(1, fps)};
  configuration.queueDepth = framesInUse;
  configuration.showsCursor = false;
  return configuration;
}

std::vector<screencapture::RunningApplication> ownApplications(
    const screencapture::ShareableContent& content) {
  std::vector<screencapture::RunningApplication> own;
  std::ranges::copy_if(content.applications, std::back_inserter(own), isOwn);
  return own;
}

std::optional<screencapture::Display> findDisplay(const screencapture::ShareableContent& content,
                                                  std::uint32_t displayID) {
  const auto found = std::ranges::find(content.displays, displayID, &screencapture::Display::displayID);
  return found == content.displays.end() ? std::nullopt : std::optional(*found);
}

}  // namespace velicor
