#include "platform/desktop/screen_layout.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velicor::desktop {

namespace {

double gap(double low, double high, double otherLow, double otherHigh) {
  return std::max({0.0, otherLow - high, low - otherHigh});
}

double squaredDistance(const DesktopRect& a, const DesktopRect& b) {
  const double dx = gap(a.minX(), a.maxX(), b.minX(), b.maxX());
  const double dy = gap(a.minY(), a.maxY(), b.minY(), b.maxY());
  return dx * dx + dy * dy;
}

DesktopRect asPlane(const DeviceRect& rect) {
  return {double(rect.x), double(rect.y), double(rect.width), double(rect.height)};
}

// Scans in order, so that ties go to the earlier candidate.
template <typename RectOf>
std::size_t bestMatch(std::size_t count, const DesktopRect& rect, RectOf rectOf) {
  std::size_t best = 0;
  for (std::size_t i = 1; i < count; ++i) {
    const double area = rectOf(i).intersection(rect).area();
    const double bestArea = rectOf(best).intersection(rect).area();
    const bool nearer = squaredDistance(rectOf(i), rect) < squaredDistance(rectOf(best), rect);
    if (area > bestArea || (area == bestArea && nearer)) best = i;
  }
  return best;
}

}  // namespace

ScreenLayout::ScreenLayout(std::vector<MonitorArea> monitors, std::size_t primary)
    : monitors_(std::move(monitors)), primary_(primary < monitors_.size() ? primary : 0) {
  if (monitors_.empty()) return;
  const auto byScale = [](const MonitorArea& a, const MonitorArea& b) { return a.scale < b.scale; };
  const double spacing = std::ranges::min_element(monitors_, byScale)->scale;
  const MonitorArea& main = monitors_[primary_];
  const double mainHeight = main.frame.height / main.scale;
  for (const MonitorArea& monitor : monitors_) {
    const double height = monitor.frame.height / monitor.scale;
    const double top = (monitor.frame.y - main.frame.y) / spacing;
    frames_.push_back({(monitor.frame.x - main.frame.x) / spacing, mainHeight - top - height,
                       monitor.frame.width / monitor.scale, height});
  }
}

std::size_t ScreenLayout::monitorAt(const DesktopRect& rect) const {
  return bestMatch(count(), rect, [this](std::size_t i) { return frames_[i]; });
}

std::size_t ScreenLayout::monitorAt(const DeviceRect& rect) const {
  return bestMatch(count(), asPlane(rect), [this](std::size_t i) { return asPlane(monitors_[i].frame); });
}

ScreenLayout::Plane ScreenLayout::planeAt(const DesktopRect& rect) const {
  return monitors_.empty() ? Plane{} : planeAt(monitorAt(rect));
}

ScreenLayout::Plane ScreenLayout::planeAt(const DeviceRect& rect) const {
  return monitors_.empty() ? Plane{} : planeAt(monitorAt(rect));
}

double ScreenLayout::scaleAt(const DesktopRect& rect) const { return planeAt(rect).monitor.scale; }

DesktopPoint ScreenLayout::toDesktop(DevicePoint pixel) const {
  const DesktopRect rect = toDesktop(DeviceRect{pixel.x, pixel.y, 1, 1});
  return {rect.midX(), rect.midY()};
}

DesktopRect ScreenLayout::toDesktop(const DeviceRect& rect) const {
  const auto [frame, monitor] = planeAt(rect);
  const double height = rect.height / monitor.scale;
  const double top = (rect.y - monitor.frame.y) / monitor.scale;
  return {frame.x + (rect.x - monitor.frame.x) / monitor.scale, frame.maxY() - top - height,
          rect.width / monitor.scale, height};
}

DeviceRect ScreenLayout::toDevice(const DesktopRect& rect) const {
  const auto [frame, monitor] = planeAt(rect);
  return {roundHalfAway(monitor.frame.x + (rect.minX() - frame.x) * monitor.scale),
          roundHalfAway(monitor.frame.y + (frame.maxY() - rect.maxY()) * monitor.scale),
          roundHalfAway(rect.width * monitor.scale), roundHalfAway(rect.height * monitor.scale)};
}

FramePoint toFrame(DesktopPoint point, const DesktopRect& window) {
  return {point.x - window.x, point.y - window.y};
}

DesktopRect toDesktop(const FrameRect& rect, const DesktopRect& window) {
  return {window.x + rect.x, window.y + rect.y, rect.width, rect.height};
}

FramePoint toFrame(ViewPoint point, double viewHeight) { return {point.x, viewHeight - point.y}; }

ViewRect toView(const FrameRect& rect, double viewHeight) {
  return {rect.x, viewHeight - rect.maxY(), rect.width, rect.height};
}

DisplayRect toDisplay(const DesktopRect& rect, const DesktopRect& display) {
  return {rect.x - display.x, display.maxY() - rect.maxY(), rect.width, rect.height};
}

QRectF pixelAligned(const ViewRect& rect, double scale) {
  const auto align = [scale](double edge) { return roundHalfAway(edge * scale) / scale; };
  return {QPointF(align(rect.minX()), align(rect.minY())), QPointF(align(rect.maxX()), align(rect.maxY()))};
}

}  // namespace velicor::desktop
