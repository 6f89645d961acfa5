#pragma once

#include <cstddef>
#include <vector>

#include <QRectF>

#include "platform/base/geometry.h"

// The one place where coordinates change their space: desktop points, points of a window or a view, points
// of a display, device pixels. Pure functions; any thread.
namespace velicor::desktop {

// What the layout needs to know of a monitor: where it lies in the root window, and its device pixels per
// point.
struct MonitorArea {
  DeviceRect frame;
  double scale = 1;
  friend bool operator==(const MonitorArea&, const MonitorArea&) = default;
};

// The plane of desktop points over a set of monitors. The origin is the bottom-left corner of the primary
// monitor and y grows upwards. A monitor's size is its device size by its own scale; its top-left corner is
// its device distance from the primary's top-left corner by the smallest scale among the monitors, so that
// monitors never overlap, and touch where all scales are equal.
//
// Off the monitors, the plane of the nearest one goes on.
class ScreenLayout {
 public:
  // No monitor: one point is one pixel, and the root window's top-left corner is the origin.
  ScreenLayout() = default;

  // An index beyond the end means the first.
  ScreenLayout(std::vector<MonitorArea> monitors, std::size_t primary);

  std::size_t count() const { return monitors_.size(); }
  std::size_t primary() const { return primary_; }

  // The whole monitor in desktop points.
  DesktopRect frame(std::size_t index) const { return frames_.at(index); }

  // The monitor with the largest common part, the earlier one on a tie; the nearest where there is no common
  // part. Only where there is a monitor.
  std::size_t monitorAt(const DesktopRect& rect) const;
  std::size_t monitorAt(const DeviceRect& rect) const;

  // Pixels per point that apply to a rectangle.
  double scaleAt(const DesktopRect& rect) const;

  // A pixel's centre: the pointer on the last pixel of a window is inside it, on the next one outside.
  DesktopPoint toDesktop(DevicePoint pixel) const;

  // The rectangle's monitor decides the scale of all of it.
  DesktopRect toDesktop(const DeviceRect& rect) const;

  // The left and top edges go to the nearest device pixel, and so does the size, halves away from zero: a
  // rectangle keeps its size in pixels wherever it is, the one that capturing it gives.
  DeviceRect toDevice(const DesktopRect& rect) const;

 private:
  struct Plane {
    DesktopRect frame;
    MonitorArea monitor;
  };
  Plane planeAt(std::size_t index) const { return {frames_[index], monitors_[index]}; }
  Plane planeAt(const DesktopRect& rect) const;
  Plane planeAt(const DeviceRect& rect) const;

  std::vector<MonitorArea> monitors_;
  std::vector<DesktopRect> frames_;
  std::size_t primary_ = 0;
};

// Between the desktop and a window that covers `window`; the window's own origin is its bottom-left corner.
FramePoint toFrame(DesktopPoint point, const DesktopRect& window);
DesktopRect toDesktop(const FrameRect& rect, const DesktopRect& window);

// Between the two ways of measuring a view of that height.
FramePoint toFrame(ViewPoint point, double viewHeight);
ViewRect toView(const FrameRect& rect, double viewHeight);

// A desktop rectangle as seen from the display that covers `display`.
DisplayRect toDisplay(const DesktopRect& rect, const DesktopRect& display);

// The rectangle with its edges moved to the nearest device pixels, still in points, for painting.
QRectF pixelAligned(const ViewRect& rect, double scale);

}  // namespace velicor::desktop
