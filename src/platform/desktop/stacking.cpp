#include "platform/desktop/stacking.h"

#include <algorithm>

#include <QRegion>

namespace velicor::desktop {

namespace {

QRegion regionOf(const DeviceRect& rect) { return {rect.x, rect.y, rect.width, rect.height}; }

bool isBypassing(const StackedWindow& window) { return window.own && window.own->bypassing; }

bool isForeignOrdinary(const StackedWindow& window) {
  return !window.own && window.stackedBy == StackedBy::manager;
}

std::size_t indexOf(const Stack& stack, WindowId window) {
  const auto entry = std::ranges::find(stack, window, &StackedWindow::id);
  return static_cast<std::size_t>(entry - stack.begin());
}

// Our bypassing windows, lowest level first: a higher one then only has to look at what is already right.
std::vector<WindowId> bypassingByLevel(const Stack& stack) {
  std::vector<StackedWindow> found;
  std::ranges::copy_if(stack, std::back_inserter(found), isBypassing);
  std::ranges::stable_sort(found, {}, [](const StackedWindow& window) { return window.own->level; });
  std::vector<WindowId> ids;
  for (const StackedWindow& window : found)
    ids.push_back(window.id);
  return ids;
}

// The highest window that has to be below, and the lowest of ours that has to be above.
struct Bounds {
  std::optional<std::size_t> floor;
  std::optional<std::size_t> ceiling;
};

bool isHigherOwn(const StackedWindow& window, const StackedWindow& subject) {
  return window.own && window.own->level > subject.own->level;
}

// A window beside the subject, such as a taskbar, which holds our status icon too, is no reason to stand above a
// higher one of ours.
bool isFloor(const Stack& stack, std::size_t index, std::size_t subject) {
  const StackedWindow& own = stack[subject];
  const StackedWindow& window = stack[index];
  const bool lowerOwn = window.own && index != subject && window.own->level < own.own->level;
  if (!lowerOwn && !isForeignOrdinary(window)) return false;
  return window.rect.intersects(own.rect) ||
         std::none_of(stack.begin(), stack.begin() + static_cast<std::ptrdiff_t>(index),
                      [&own](const StackedWindow& below) {
                        return isHigherOwn(below, own) && below.rect.intersects(own.rect);
                      });
}

Bounds boundsOf(const Stack& stack, std::size_t subject) {
  Bounds bounds;
  for (std::size_t i = 0; i < stack.size(); ++i) {
    if (isFloor(stack, i, subject)) bounds.floor = i;
  }
  for (std::size_t i = stack.size(); i-- > (bounds.floor ? *bounds.floor + 1 : 0);) {
    if (isHigherOwn(stack[i], stack[subject])) bounds.ceiling = i;
  }
  return bounds;
}

// Whether going down to that place would put the window below one that places itself.
bool wouldBeHidden(const Stack& stack, std::size_t subject, std::size_t place) {
  return std::any_of(stack.begin() + static_cast<std::ptrdiff_t>(place),
                     stack.begin() + static_cast<std::ptrdiff_t>(subject), [&](const StackedWindow& window) {
                       return !window.own && window.stackedBy == StackedBy::itself &&
                              window.rect.intersects(stack[subject].rect);
                     });
}

std::optional<RestackStep> stepFor(const Stack& stack, std::size_t subject) {
  const Bounds bounds = boundsOf(stack, subject);
  const bool tooLow = bounds.floor && subject < *bounds.floor;
  const bool tooHigh =
      bounds.ceiling && subject > *bounds.ceiling && !wouldBeHidden(stack, subject, *bounds.ceiling);
  if (!tooLow && !tooHigh) return std::nullopt;
  if (bounds.floor) return RestackStep{stack[subject].id, stack[*bounds.floor].id, true};
  return RestackStep{stack[subject].id, stack[*bounds.ceiling].id, false};
}

void apply(const RestackStep& step, Stack& stack) {
  const auto from = stack.begin() + static_cast<std::ptrdiff_t>(indexOf(stack, step.window));
  const StackedWindow moved = *from;
  stack.erase(from);
  const std::size_t sibling = indexOf(stack, step.sibling);
  stack.insert(stack.begin() + static_cast<std::ptrdiff_t>(step.above ? sibling + 1 : sibling), moved);
}

}  // namespace

std::vector<RestackStep> restackSteps(Stack stack) {
  std::vector<RestackStep> steps;
  const std::vector<WindowId> windows = bypassingByLevel(stack);
  // What moves last may clear the way for what was looked at before it.
  for (std::size_t round = 0; round <= windows.size(); ++round) {
    const std::size_t before = steps.size();
    for (const WindowId window : windows) {
      const std::optional<RestackStep> step = stepFor(stack, indexOf(stack, window));
      if (!step) continue;
      apply(*step, stack);
      steps.push_back(*step);
    }
    if (steps.size() == before) break;
  }
  return steps;
}

bool isCovered(const Stack& stack, WindowId window) {
  const std::size_t index = indexOf(stack, window);
  if (index == stack.size()) return true;
  QRegion visible = regionOf(stack[index].rect);
  for (std::size_t i = index + 1; i < stack.size() && !visible.isEmpty(); ++i) {
    if (!stack[i].own && stack[i].opaque) visible -= regionOf(stack[i].rect);
  }
  return visible.isEmpty();
}

bool isInFront(const Stack& stack, WindowId window) {
  const auto own = std::ranges::find(stack, window, &StackedWindow::id);
  return own != stack.end() && std::none_of(own, stack.end(), [&own](const StackedWindow& other) {
           return isForeignOrdinary(other) && other.rect.intersects(own->rect);
         });
}

bool isOvertopped(const Stack& stack, WindowId window) {
  const auto own = std::ranges::find(stack, window, &StackedWindow::id);
  return own == stack.end() || std::any_of(own, stack.end(), [&own](const StackedWindow& other) {
           return isForeignOrdinary(other) && other.rect.contains(own->rect);
         });
}

}  // namespace velicor::desktop
