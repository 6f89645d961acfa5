#include "platform/screencapture/x11/window_stack.h"

#include <algorithm>

namespace velicor::screencapture {

std::vector<WindowId> WindowStack::reorder(std::span<const WindowId> bottomToTop) {
  needsQuery_ = false;
  const std::vector<WindowId> order(bottomToTop.begin(), bottomToTop.end());
  if (order != order_) ++revision_;
  order_ = order;
  std::vector<WindowId> sorted = order;
  std::sort(sorted.begin(), sorted.end());
  const auto gone = [&sorted](const auto& entry) {
    return !std::binary_search(sorted.begin(), sorted.end(), entry.first);
  };
  std::erase_if(windows_, gone);
  std::erase_if(clientsOfUnknown_, gone);
  std::vector<WindowId> unknown;
  std::copy_if(order_.begin(), order_.end(), std::back_inserter(unknown),
               [this](WindowId id) { return !windows_.contains(id); });
  return unknown;
}

void WindowStack::describe(const StackedWindow& window) {
  StackedWindow entry = window;
  entry.pixmapGeneration = ++generations_;
  entry.shapeGeneration = ++generations_;
  if (const auto told = clientsOfUnknown_.extract(window.id)) entry.client = told.mapped();
  windows_[window.id] = entry;
  ++revision_;
}

void WindowStack::forget(WindowId id) {
  std::erase(order_, id);
  clientsOfUnknown_.erase(id);
  if (windows_.erase(id) > 0) ++revision_;
}

void WindowStack::created() { needsQuery_ = true; }

void WindowStack::destroyed(WindowId id) { forget(id); }

void WindowStack::mapped(WindowId id) {
  StackedWindow* window = known(id);
  if (!window) return askAgain();
  if (window->viewable) return;
  window->viewable = true;
  window->pixmapGeneration = ++generations_;
  ++revision_;
}

void WindowStack::unmapped(WindowId id) {
  StackedWindow* window = known(id);
  if (!window || !window->viewable) return;
  window->viewable = false;
  ++revision_;
}

void WindowStack::configured(WindowId id, const DeviceRect& bounds, int border, WindowId below) {
  StackedWindow* window = known(id);
  if (!window) return;
  const bool resized = bounds.width != window->bounds.width || bounds.height != window->bounds.height ||
                       border != window->border;
  if (resized) window->pixmapGeneration = ++generations_;
  if (resized || !(bounds == window->bounds)) ++revision_;
  window->bounds = bounds;
  window->border = border;
  if (neighbourBelow(id) != below) askAgain();
}

// Even one that was there before is somewhere else now, which no other event tells.
void WindowStack::enteredRoot(WindowId id) {
  forget(id);
  askAgain();
}

void WindowStack::leftRoot(WindowId id) { forget(id); }

void WindowStack::shapeChanged(WindowId idOrClient, bool shaped) {
  const StackedWindow* found = findByClient(idOrClient);
  if (!found) return;
  StackedWindow& window = *known(found->id);
  (window.id == idOrClient ? window.shaped : window.shown.clientShaped) = shaped;
  // Until it is asked for.
  if (window.id == idOrClient) window.shown.insideShape.reset();
  window.shapeGeneration = ++generations_;
  ++revision_;
}

void WindowStack::clientFound(WindowId frame, WindowId client) {
  if (StackedWindow* window = known(frame)) {
    window->client = client;
    ++revision_;
  } else {
    clientsOfUnknown_[frame] = client;
  }
}

void WindowStack::shownAs(WindowId id, const Appearance& appearance) {
  StackedWindow* window = known(id);
  if (!window) return;
  window->shown = appearance;
  ++revision_;
}

void WindowStack::currentDesktopIs(std::optional<std::uint32_t> desktop) {
  if (desktop != currentDesktop_) ++revision_;
  currentDesktop_ = desktop;
}

void WindowStack::pixmapsMoved() {
  for (auto& [id, window] : windows_)
    window.pixmapGeneration = ++generations_;
  ++revision_;
}

const StackedWindow* WindowStack::find(WindowId id) const {
  const auto entry = windows_.find(id);
  return entry == windows_.end() ? nullptr : &entry->second;
}

const StackedWindow* WindowStack::findByClient(WindowId client) const {
  if (const StackedWindow* window = find(client)) return window;
  const auto entry = std::find_if(windows_.begin(), windows_.end(), [client](const auto& candidate) {
    return candidate.second.client == client;
  });
  return entry == windows_.end() ? nullptr : &entry->second;
}

std::vector<const StackedWindow*> WindowStack::bottomToTop() const {
  std::vector<const StackedWindow*> all;
  all.reserve(order_.size());
  for (const WindowId id : order_) {
    if (const StackedWindow* window = find(id)) all.push_back(window);
  }
  return all;
}

std::vector<const StackedWindow*> WindowStack::visibleBottomToTop() const {
  std::vector<const StackedWindow*> visible;
  for (const StackedWindow* window : bottomToTop()) {
    if (!window->viewable) continue;
    if (window->unmanaged && window->shown.guard) {
      visible.clear();
    } else if (!isHidden(*window)) {
      visible.push_back(window);
    }
  }
  return visible;
}

bool WindowStack::isHidden(const StackedWindow& window) const {
  if (window.shown.minimised) return true;
  const std::optional<std::uint32_t> desktop = window.shown.desktop;
  if (!desktop || !currentDesktop_ || *desktop == everyDesktop) return false;
  return *desktop != *currentDesktop_;
}

StackedWindow* WindowStack::known(WindowId id) {
  const auto entry = windows_.find(id);
  return entry == windows_.end() ? nullptr : &entry->second;
}

WindowId WindowStack::neighbourBelow(WindowId id) const {
  const auto place = std::find(order_.begin(), order_.end(), id);
  return place == order_.end() || place == order_.begin() ? 0 : *(place - 1);
}

void WindowStack::askAgain() {
  needsQuery_ = true;
  ++revision_;
}

}  // namespace velicor::screencapture
