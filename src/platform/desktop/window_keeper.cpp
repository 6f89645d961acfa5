#include "platform/desktop/window_keeper.h"

#include <chrono>
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

constexpr auto settlingTime = std::chrono::milliseconds(400);

// A panel's own idea is ahead of a window manager that is just moving it.
std::optional<DeviceRect> placeOf(QWidget& window) {
  if (const Panel* panel = Panel::of(&window)) return panel->deviceFrame();
  return toolkit::geometryOf(toolkit::identifierOf(window));
}

}  // namespace

WindowKeeper::WindowKeeper(Desktop& desktop) : desktop_(desktop), monitors_(monitors()) {
  settling_.setSingleShot(true);
  settling_.setInterval(settlingTime);
  settling_.callOnTimeout(&settling_, [this] { keepAll(); });
  screensChanged_ = desktop_.screens().changed.subscribe([this] { followScreens(); });
}

std::vector<DeviceRect> WindowKeeper::monitors() const {
  std::vector<DeviceRect> result;
  for (const Screen& screen : desktop_.screens().screens()) result.push_back(screen.deviceFrame);
  return result;
}

void WindowKeeper::followScreens() {
  const std::vector<DeviceRect> before = std::exchange(monitors_, monitors());
  if (monitors_ == before) return;
  keepAll();
  settling_.start();
}

void WindowKeeper::keepAll() const {
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->windowHandle() && toolkit::isManaged(*window)) keep(*window);
  }
}

void WindowKeeper::keep(QWidget& window) const {
  const auto place = placeOf(window);
  const auto refuge = desktop_.screens().mainScreen();
  if (!place || !refuge) return;
  const ScreenLayout& layout = desktop_.screens().layout();
  const auto wanted = madeWhole(layout.toDesktop(*place), desktop_.screens().screens(), *refuge);
  if (!wanted) return;
  if (Panel* panel = Panel::of(&window)) return panel->setFrame(*wanted);
  toolkit::configure(toolkit::identifierOf(window), layout.toDevice(*wanted));
}

}  // namespace velicor::desktop
