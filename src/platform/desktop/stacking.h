#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/base/geometry.h"

// The order of the windows on the screen as a plain list, and what follows from it. Pure functions.
namespace velicor::desktop {

using WindowId = std::uint32_t;

// Who decides where a top-level window stands.
enum class StackedBy {
  manager,  // an ordinary window: its order is the window manager's, or its own where there is none
  itself,   // a menu, a tooltip or another program's overlay; nobody's business
};

// One of our own windows in the stack.
struct OwnWindow {
  int level = 0;
  bool bypassing = false;  // we place it ourselves
  friend bool operator==(const OwnWindow&, const OwnWindow&) = default;
};

// A top-level window that is on the screen, frame and all.
struct StackedWindow {
  WindowId id = 0;
  DeviceRect rect;
  StackedBy stackedBy = StackedBy::manager;
  bool opaque = true;  // hides what is below its whole rectangle
  std::optional<OwnWindow> own;
  friend bool operator==(const StackedWindow&, const StackedWindow&) = default;
};

// From the bottom to the top.
using Stack = std::vector<StackedWindow>;

// A request to the server: put `window` directly above, or directly below, `sibling`.
struct RestackStep {
  WindowId window = 0;
  WindowId sibling = 0;
  bool above = true;
  friend bool operator==(const RestackStep&, const RestackStep&) = default;
};

// What to ask for so that each of our bypassing windows stands above every ordinary window of other programs and
// above our windows of lower levels, and below our higher ones as far as those are themselves above the other
// programs' windows that it overlaps. Nothing where the order is right already: windows that place themselves may
// stand above ours, and no request is ever made to get past them, in either direction. The steps are meant to be
// made in order.
std::vector<RestackStep> restackSteps(Stack stack);

// Whether opaque windows of other programs above this one leave no pixel of it to be seen. A window that is
// not in the stack can't be seen either.
bool isCovered(const Stack& stack, WindowId window);

// Whether no ordinary window of another program stands above any part of this one.
bool isInFront(const Stack& stack, WindowId window);

// Whether one ordinary window of another program, see-through or not, stands above this one and covers all of
// it. True too of a window that is not in the stack.
bool isOvertopped(const Stack& stack, WindowId window);

}  // namespace velicor::desktop
