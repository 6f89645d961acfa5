#include "platform/desktop/window_keeper.h"

#include <chrono>
#include <set>
#include <utility>

#include <QApplication>
#include <QWidget>

#include "platform/desktop/desktop.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/desktop/panel.h"
#include "platform/desktop/reach.h"
#include "platform/desktop/toolkit_window.h"

namespace velicor::desktop {

namespace {

constexpr auto managersTime = std::chrono::milliseconds(400);

std::set<double> scalesOf(const std::vector<MonitorArea>& monitors) {
  std::set<double> scales;
  for (const MonitorArea& monitor : monitors) scales.insert(monitor.scale);
  return scales;
}

// Panels have seen to their own size.
void rescale(QWidget& window) {
  toolkit::renewPicture(window);
  if (Panel::of(&window)) return;
  const double scale = window.devicePixelRatioF();
  const DeviceRect pixels{0, 0, roundHalfAway(window.width() * scale), roundHalfAway(window.height() * scale)};
  const WindowId id = toolkit::identifierOf(window);
  if (window.minimumSize() == window.maximumSize()) toolkit::fixSize(id, pixels);
  toolkit::resize(id, pixels.width, pixels.height);
}

void rescaleAll() {
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->windowHandle()) rescale(*window);
  }
}

}  // namespace

WindowKeeper::WindowKeeper(Desktop& desktop) : desktop_(desktop), monitors_(monitors()) {
  settling_.setSingleShot(true);
  settling_.setInterval(managersTime);
  settling_.callOnTimeout(&settling_, [this] { keepAll(); });
  screensChanged_ = desktop_.screens().changed.subscribe([this] { followScreens(); });
}

std::vector<MonitorArea> WindowKeeper::monitors() const {
  std::vector<MonitorArea> result;
  for (const Screen& screen : desktop_.screens().screens())
    result.push_back({screen.deviceFrame, screen.backingScaleFactor});
  return result;
}

void WindowKeeper::followScreens() {
  const std::vector<MonitorArea> before = std::exchange(monitors_, monitors());
  if (monitors_ == before) return;
  if (scalesOf(monitors_) != scalesOf(before)) rescaleAll();
  keepAll();
  settling_.start();
}

void WindowKeeper::keepAll() const {
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->windowHandle() && toolkit::isManaged(*window)) keep(*window);
  }
}

void WindowKeeper::keep(QWidget& window) const {
  const auto refuge = desktop_.screens().mainScreen();
  if (!refuge) return;
  const ScreenLayout& layout = desktop_.screens().layout();
  const auto kept = [&](const DesktopRect& frame) {
    return madeWhole(frame, desktop_.screens().screens(), *refuge);
  };
  // A panel's own idea is ahead of a window manager that is just moving it.
  if (Panel* panel = Panel::of(&window)) {
    if (const auto wanted = kept(panel->frame())) panel->setFrame(*wanted);
    return;
  }
  const WindowId id = toolkit::identifierOf(window);
  const auto place = toolkit::geometryOf(id);
  if (!place) return;
  if (const auto wanted = kept(layout.toDesktop(*place))) toolkit::configure(id, layout.toDevice(*wanted));
}

}  // namespace velicor::desktop
