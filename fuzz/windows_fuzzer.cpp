// What other programs on the screen may do: properties of any content, and windows that come, change and go
// in any order.
#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "demand.h"
#include "platform/desktop/struts.h"
#include "platform/screencapture/x11/appearance.h"
#include "platform/screencapture/x11/scene_plan.h"
#include "platform/screencapture/x11/window_stack.h"
#include "platform/tray/tray_colors.h"

namespace {

using namespace velicor::screencapture;
using velicor::DeviceRect;
using velicor::fuzz::demand;

constexpr StateAtoms stateAtoms{3, 4};
constexpr std::uint32_t clientMask = 0xf;  // identifiers of a client: its base and what the mask covers

// Values in the ranges that the X protocol has for them, and small ones more often than not.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data, size) {}

  bool isEmpty() { return data_.remaining_bytes() == 0; }
  int below(int limit) { return data_.ConsumeIntegralInRange(0, limit - 1); }
  bool flag() { return data_.ConsumeBool(); }

  int position() { return flag() ? below(96) - 16 : data_.ConsumeIntegral<std::int16_t>(); }
  int length() { return flag() ? below(64) : data_.ConsumeIntegral<std::uint16_t>(); }
  DeviceRect rect() {
    const int x = position(), y = position(), width = length();
    return {x, y, width, length()};
  }
  std::uint32_t number() {
    switch (below(4)) {
      case 0:
        return data_.ConsumeIntegral<std::uint32_t>();
      case 1:
        return data_.PickValueInArray<std::uint32_t>({0x7fffffff, 0x80000000, 0xffffffff});
      default:
        return static_cast<std::uint32_t>(below(64));
    }
  }
  std::optional<std::uint32_t> anyNumber() { return flag() ? std::optional(number()) : std::nullopt; }
  std::vector<std::uint32_t> numbers(int most) {
    std::vector<std::uint32_t> all(static_cast<std::size_t>(below(most + 1)));
    std::ranges::generate(all, [this] { return number(); });
    return all;
  }
  std::string name() { return data_.ConsumeRandomLengthString(20) + (flag() ? " guard window" : ""); }
  WindowId window() { return static_cast<WindowId>(below(64)); }

 private:
  FuzzedDataProvider data_;
};

void checkStruts(Input& input) {
  const DeviceRect root{0, 0, input.length(), input.length()};
  const DeviceRect monitor = input.rect().intersection(root);
  std::vector<velicor::desktop::Strut> struts;
  while (!input.isEmpty() && struts.size() < 8) {
    struts.push_back(velicor::desktop::readStrut(input.numbers(12), root));
    const DeviceRect left = withoutStruts(monitor, root, struts);
    demand(left.width >= 0 && left.height >= 0 && monitor.contains(left), "bars leave a part of the monitor");
  }
}

void checkTray(Input& input) {
  const auto numbers = input.numbers(13);
  demand(velicor::tray::foregroundFrom(numbers).isValid() == (numbers.size() >= 3),
         "a tray's colour takes three numbers");
}

Appearance anyAppearance(Input& input) {
  const std::string name = input.name();
  AppearanceProperties properties;
  properties.states = input.numbers(4);
  properties.desktop = input.anyNumber();
  properties.opacity = input.anyNumber();
  properties.clientOpacity = input.anyNumber();
  properties.name = name;
  if (input.flag()) properties.clientPlace = input.rect();
  properties.extents = input.numbers(5);
  properties.clientShaped = input.flag();
  properties.opaqueRegion = input.numbers(9);
  for (int count = input.below(4); count > 0; --count)
    properties.shape.push_back(input.rect());
  const Appearance shown = appearanceFrom(properties, stateAtoms);
  demand(shown.guard == name.ends_with(" guard window"), "guards are told by their names");
  demand(!shown.painted || (shown.clientPlace && shown.painted->contains(*shown.clientPlace)),
         "a frame is painted around its client");
  return shown;
}

StackedWindow anyWindow(Input& input, WindowId id) {
  StackedWindow window;
  window.id = id;
  if (input.flag()) window.client = input.window();
  window.border = input.flag() ? 0 : input.length();
  window.bounds = input.rect();
  window.bounds.width += 2 * window.border;
  window.bounds.height += 2 * window.border;
  window.visual = input.number();
  window.viewable = input.below(4) != 0;
  window.drawable = input.below(4) != 0;
  window.alpha = input.flag();
  window.shaped = input.flag();
  window.unmanaged = input.flag();
  return window;
}

SceneView anyView(Input& input) {
  SceneView view;
  view.frame = input.rect();
  view.monitor = input.rect();
  if (input.flag()) view.leftOut.add(input.window() & ~clientMask, clientMask);
  view.composited = input.flag();
  view.background = {input.number(), input.number()};
  return view;
}

void checkOrder(const WindowStack& stack) {
  const auto all = stack.bottomToTop();
  std::set<WindowId> ids;
  for (const StackedWindow* window : all) {
    demand(ids.insert(window->id).second, "a window is there once");
    demand(stack.find(window->id) == window, "a window is found by its identifier");
  }
  auto next = all.begin();
  for (const StackedWindow* window : stack.visibleBottomToTop()) {
    next = std::find(next, all.end(), window);
    demand(next != all.end(), "visible windows keep their order");
    demand(window->viewable && !window->shown.minimised, "what is visible is shown");
  }
}

void checkLayer(const Layer& layer, const ScenePlan& plan, const SceneView& view) {
  demand(!layer.visible.isEmpty(), "a layer shows something");
  demand(plan.screen.contains(layer.visible), "a layer lies within the frame");
  demand(layer.bounds.contains(layer.visible), "a layer lies within its window");
  demand(layer.solid.isEmpty() || layer.visible.contains(layer.solid), "what is solid shows");
  demand(!view.leftOut.made(layer.id), "what is left out is not there");
  demand(layer.opacity == fullyOpaque || layer.blended, "what is not opaque is blended");
  demand(view.composited || (!layer.blended && !layer.cut), "without a compositor nothing is blended or cut");
  demand(!layer.cut || layer.shaped, "what is cut is not the whole of its bounds");
}

void checkPlan(const WindowStack& stack, const ScenePlan& plan, const SceneView& view) {
  demand(plan == planScene(stack, view), "a plan depends on nothing else");
  demand(plan.screen.isEmpty() || (view.frame.contains(plan.screen) && view.monitor.contains(plan.screen)),
         "the screen part lies on the monitor and in the frame");
  demand(plan.covered || plan.background == view.background, "a plan has its backdrop");
  demand(!plan.covered || !plan.layers.empty(), "a layer covers");
  const auto visible = stack.visibleBottomToTop();
  auto next = visible.begin();
  for (const Layer& layer : plan.layers) {
    checkLayer(layer, plan, view);
    next = std::ranges::find(next, visible.end(), layer.id, &StackedWindow::id);
    demand(next != visible.end(), "layers are visible windows in their order");
    const bool covers = layer.solid == plan.screen;
    demand(covers == (plan.covered && &layer == &plan.layers.front()), "only the lowest layer covers all");
  }
}

// What the owner of a stack does when the server is asked.
void refresh(Input& input, WindowStack& stack) {
  std::vector<WindowId> order;
  for (int count = input.below(12); count > 0; --count) {
    const WindowId id = input.window();
    if (std::ranges::find(order, id) == order.end()) order.push_back(id);
  }
  for (const WindowId id : stack.reorder(order)) {
    demand(!stack.find(id), "only what is unknown is asked for");
    if (input.below(4) == 0) {
      stack.forget(id);
      std::erase(order, id);
    } else {
      stack.describe(anyWindow(input, id));
    }
  }
  demand(!stack.needsQuery(), "an answer settles the question");
  const auto all = stack.bottomToTop();
  demand(std::ranges::equal(all, order, {}, &StackedWindow::id), "the order is the server's");
}

void happen(Input& input, WindowStack& stack) {
  const WindowId id = input.window();
  switch (input.below(14)) {
    case 0:
      return stack.created();
    case 1:
      stack.destroyed(id);
      return demand(!stack.find(id), "what is gone is forgotten");
    case 2:
      return stack.mapped(id);
    case 3:
      return stack.unmapped(id);
    case 4: {
      const DeviceRect bounds = input.rect();
      return stack.configured(id, bounds, input.flag() ? 0 : input.length(), input.window());
    }
    case 5:
      return stack.circulated();
    case 6:
      return stack.enteredRoot(id);
    case 7:
      return stack.leftRoot(id);
    case 8:
      return stack.shapeChanged(id, input.flag());
    case 9:
      return stack.clientFound(id, input.window());
    case 10:
      return stack.shownAs(id, anyAppearance(input));
    case 11:
      return stack.currentDesktopIs(input.anyNumber());
    case 12:
      return stack.pixmapsMoved();
    default:
      return refresh(input, stack);
  }
}

void checkHistory(Input& input) {
  const SceneView view = anyView(input);
  WindowStack stack;
  ScenePlan plan = planScene(stack, view);
  while (!input.isEmpty()) {
    const unsigned revision = stack.revision();
    happen(input, stack);
    checkOrder(stack);
    ScenePlan next = planScene(stack, view);
    checkPlan(stack, next, view);
    demand(next == plan || stack.revision() != revision, "what changes the picture changes the revision");
    plan = std::move(next);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  switch (input.below(8)) {
    case 0:
      checkStruts(input);
      break;
    case 1:
      checkTray(input);
      break;
    default:
      checkHistory(input);
  }
  return 0;
}
