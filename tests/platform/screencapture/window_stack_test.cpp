#include "platform/screencapture/x11/window_stack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <functional>
#include <map>
#include <random>

#include "platform/screencapture/x11/scene_plan.h"

namespace velicor::screencapture {
namespace {

constexpr std::uint32_t ourBase = 0x400000;
constexpr std::uint32_t clientMask = 0x1fffff;

StackedWindow windowAt(WindowId id, const DeviceRect& bounds) {
  StackedWindow window;
  window.id = id;
  window.bounds = bounds;
  window.viewable = true;
  return window;
}

WindowStack stackOf(const std::vector<StackedWindow>& windows) {
  WindowStack stack;
  std::vector<WindowId> order;
  for (const StackedWindow& window : windows)
    order.push_back(window.id);
  stack.reorder(order);
  for (const StackedWindow& window : windows)
    stack.describe(window);
  return stack;
}

SceneView viewOf(const DeviceRect& frame) {
  SceneView view;
  view.frame = frame;
  view.monitor = {0, 0, 1000, 1000};
  view.leftOut.add(ourBase, clientMask);
  view.background = {0x77, 1};
  return view;
}

std::vector<WindowId> idsOf(const ScenePlan& plan) {
  std::vector<WindowId> ids;
  for (const Layer& layer : plan.layers)
    ids.push_back(layer.id);
  return ids;
}

// A server in miniature: does what it is asked at once, and tells of it by events that arrive later.
class MiniServer {
 public:
  explicit MiniServer(unsigned seed) : random_(seed) {}

  void act() {
    const int what = pick(12);
    if (order_.empty() || what == 0) return create();
    if (what == 9) return circulate();
    if (what == 10 && !away_.empty()) return enter();
    const WindowId id = order_[static_cast<std::size_t>(pick(static_cast<int>(order_.size())))];
    switch (what) {
      case 1:
        return destroy(id);
      case 2:
        return setMapped(id, true);
      case 3:
        return setMapped(id, false);
      case 4:
        return restack(id);
      case 5:
        return reshape(id);
      case 6:
        return setBorder(id);
      case 7:
        return leave(id, pick(2) == 0);
      default:
        return place(id);
    }
  }

  // Some of what was told arrives at the model.
  void deliver(WindowStack& model, std::size_t most) {
    for (; most > 0 && !events_.empty(); --most) {
      events_.front()(model);
      events_.pop_front();
    }
  }

  // What the owner of a model does before it relies on it.
  void settle(WindowStack& model) {
    deliver(model, events_.size());
    while (model.needsQuery()) {
      for (const WindowId id : model.reorder(order_))
        model.describe(windows_.at(id));
      deliver(model, events_.size());
    }
  }

  // Replies bring what was told before them, and what happens next is told after them.
  void answerQuery(WindowStack& model) {
    const std::vector<WindowId> unknown = model.reorder(order_);
    for (int i = pick(3); i > 0; --i)
      act();
    for (const WindowId id : unknown) {
      const auto entry = windows_.find(id);
      entry == windows_.end() ? model.forget(id) : model.describe(entry->second);
    }
  }

  // What was named or read for a generation is still what the server has.
  void expectSame(const WindowStack& model) {
    const auto known = model.bottomToTop();
    ASSERT_EQ(known.size(), order_.size());
    for (std::size_t i = 0; i < known.size(); ++i) {
      const StackedWindow& truth = windows_.at(order_[i]);
      EXPECT_EQ(known[i]->id, truth.id);
      EXPECT_EQ(known[i]->bounds, truth.bounds);
      EXPECT_EQ(known[i]->border, truth.border);
      EXPECT_EQ(known[i]->viewable, truth.viewable);
      EXPECT_EQ(known[i]->shaped, truth.shaped);
      const auto read = [this](unsigned generation, unsigned state) {
        return seen_.emplace(generation, state).first->second;
      };
      if (truth.viewable) {
        EXPECT_EQ(read(known[i]->pixmapGeneration, truth.pixmapGeneration), truth.pixmapGeneration);
      }
      EXPECT_EQ(read(known[i]->shapeGeneration, truth.shapeGeneration), truth.shapeGeneration);
    }
  }

  int pick(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }

 private:
  // Identifiers come back: a program may name a new window like one that is gone.
  void create() {
    const WindowId id = 1 + static_cast<WindowId>(pick(12));
    if (windows_.contains(id)) return;
    windows_[id] = windowAt(id, {pick(100), pick(100), 1 + pick(50), 1 + pick(50)});
    windows_[id].viewable = false;
    windows_[id].pixmapGeneration = ++states_;
    windows_[id].shapeGeneration = ++states_;
    order_.push_back(id);
    events_.push_back([](WindowStack& model) { model.created(); });
  }

  void destroy(WindowId id) {
    if (windows_[id].viewable) setMapped(id, false);
    windows_.erase(id);
    std::erase(order_, id);
    events_.push_back([id](WindowStack& model) { model.destroyed(id); });
  }

  void setMapped(WindowId id, bool mapped) {
    if (windows_[id].viewable == mapped) return;
    windows_[id].viewable = mapped;
    if (mapped) windows_[id].pixmapGeneration = ++states_;
    events_.push_back([id, mapped](WindowStack& model) { mapped ? model.mapped(id) : model.unmapped(id); });
  }

  void restack(WindowId id) {
    std::erase(order_, id);
    order_.insert(order_.begin() + pick(static_cast<int>(order_.size()) + 1), id);
    tellPlace(id);
  }

  void place(WindowId id) {
    const DeviceRect before = windows_[id].bounds;
    windows_[id].bounds = {pick(100), pick(100), 1 + pick(50), 1 + pick(50)};
    const bool resized =
        windows_[id].bounds.width != before.width || windows_[id].bounds.height != before.height;
    if (resized) windows_[id].pixmapGeneration = ++states_;
    tellPlace(id);
  }

  void setBorder(WindowId id) {
    windows_[id].border = (windows_[id].border + 1 + pick(3)) % 4;
    windows_[id].pixmapGeneration = ++states_;
    tellPlace(id);
  }

  void reshape(WindowId id) {
    const bool shaped = windows_[id].shaped = pick(2) == 0;
    windows_[id].shapeGeneration = ++states_;
    events_.push_back([=](WindowStack& model) { model.shapeChanged(id, shaped); });
  }

  void circulate() {
    std::rotate(order_.begin(), order_.begin() + 1, order_.end());
    events_.push_back([](WindowStack& model) { model.circulated(); });
  }

  // Into another window, or into the root window anew; what happens to it there is not told.
  void leave(WindowId id, bool stays) {
    const bool shown = windows_[id].viewable;
    setMapped(id, false);
    std::erase(order_, id);
    away_.push_back(windows_.extract(id));
    away_.back().mapped().viewable = shown;
    if (stays) return enter();
    events_.push_back([id](WindowStack& model) { model.leftRoot(id); });
  }

  void enter() {
    auto window = std::move(away_.back());
    away_.pop_back();
    const WindowId id = window.key();
    if (windows_.contains(id)) return;
    const bool shown = std::exchange(window.mapped().viewable, false);
    window.mapped().bounds = {pick(100), pick(100), 1 + pick(50), 1 + pick(50)};
    window.mapped().shaped = pick(2) == 0;
    window.mapped().shapeGeneration = ++states_;
    windows_.insert(std::move(window));
    order_.push_back(id);
    events_.push_back([id](WindowStack& model) { model.enteredRoot(id); });
    setMapped(id, shown);
  }

  void tellPlace(WindowId id) {
    const auto position = std::find(order_.begin(), order_.end(), id);
    const WindowId below = position == order_.begin() ? 0 : *(position - 1);
    const DeviceRect bounds = windows_[id].bounds;
    const int border = windows_[id].border;
    events_.push_back([=](WindowStack& model) { model.configured(id, bounds, border, below); });
  }

  std::mt19937 random_;
  std::vector<WindowId> order_;
  std::map<WindowId, StackedWindow> windows_;
  std::vector<std::map<WindowId, StackedWindow>::node_type> away_;
  std::deque<std::function<void(WindowStack&)>> events_;
  unsigned states_ = 0;                // of all pixmaps and shapes
  std::map<unsigned, unsigned> seen_;  // states by the model's generations
};

TEST(WindowStack, AgreesWithTheServerAfterAnyHistory) {
  const unsigned histories = std::getenv("VELICOR_LONG_TESTS") ? 1'000'000 : 1000;
  for (unsigned seed = 0; seed < histories; ++seed) {
    MiniServer server(seed);
    WindowStack model;
    for (int step = 0; step < 60; ++step) {
      server.act();
      if (server.pick(3) == 0) server.deliver(model, static_cast<std::size_t>(server.pick(4)));
      if (server.pick(7) == 0 && model.needsQuery()) server.answerQuery(model);
      if (server.pick(12) != 0) continue;
      server.settle(model);
      server.expectSame(model);
      if (testing::Test::HasFailure()) FAIL() << "seed " << seed << " step " << step;
    }
  }
}

TEST(WindowStack, KnowsWhenContentsMoveToAnotherPixmap) {
  WindowStack stack = stackOf({windowAt(1, {0, 0, 100, 100}), windowAt(2, {0, 0, 50, 50})});
  const auto generation = [&] { return stack.find(1)->pixmapGeneration; };
  unsigned last = generation();
  const auto changedSince = [&] { return std::exchange(last, generation()) != last; };

  stack.configured(1, {10, 10, 100, 100}, 0, 0);
  EXPECT_FALSE(changedSince()) << "move";
  stack.shapeChanged(1, true);
  stack.shownAs(1, {.opacity = 0x80000000});
  EXPECT_FALSE(changedSince()) << "shape and opacity";
  stack.configured(1, {10, 10, 120, 100}, 0, 0);
  EXPECT_TRUE(changedSince()) << "size";
  stack.configured(1, {10, 10, 120, 100}, 2, 0);
  EXPECT_TRUE(changedSince()) << "border";
  stack.unmapped(1);
  stack.mapped(1);
  EXPECT_TRUE(changedSince()) << "map";
  stack.mapped(1);
  EXPECT_FALSE(changedSince()) << "map again";
  stack.pixmapsMoved();
  EXPECT_TRUE(changedSince()) << "compositing manager";
  stack.destroyed(1);
  stack.describe(windowAt(1, {0, 0, 100, 100}));
  EXPECT_TRUE(changedSince()) << "another window of the same name";
}

TEST(WindowStack, FindsClientsWhicheverIsToldFirst) {
  WindowStack stack;
  stack.clientFound(1, 0x500001);
  stack.reorder(std::vector<WindowId>{1, 2});
  stack.describe(windowAt(1, {0, 0, 10, 10}));
  stack.describe(windowAt(2, {0, 0, 10, 10}));
  stack.clientFound(2, 0x500002);
  EXPECT_EQ(stack.findByClient(0x500001)->id, 1u);
  EXPECT_EQ(stack.findByClient(0x500002)->id, 2u);
  EXPECT_EQ(stack.findByClient(2)->id, 2u);
  EXPECT_EQ(stack.findByClient(0x500003), nullptr);
}

TEST(ScenePlan, EndsAtTheWindowThatCoversEverything) {
  const DeviceRect frame{100, 100, 50, 50};
  auto stack = stackOf(
      {windowAt(1, {0, 0, 500, 500}), windowAt(2, {90, 90, 100, 100}), windowAt(3, {120, 120, 10, 10})});
  EXPECT_EQ(idsOf(planScene(stack, viewOf(frame))), (std::vector<WindowId>{2, 3}));
  EXPECT_TRUE(planScene(stack, viewOf(frame)).covered);
  EXPECT_EQ(planScene(stack, viewOf(frame)).background, Background{});

  stack.shapeChanged(2, true);
  EXPECT_EQ(idsOf(planScene(stack, viewOf(frame))), (std::vector<WindowId>{1, 2, 3}));
  stack.shapeChanged(2, false);
  stack.shownAs(2, {.opacity = 0x80000000});
  EXPECT_EQ(idsOf(planScene(stack, viewOf(frame))), (std::vector<WindowId>{2, 3})) << "nobody blends";
  SceneView composited = viewOf(frame);
  composited.composited = true;
  const ScenePlan blended = planScene(stack, composited);
  EXPECT_EQ(idsOf(blended), (std::vector<WindowId>{1, 2, 3}));
  EXPECT_EQ(blended.layers[1].opacity, 0x80000000u);
  EXPECT_TRUE(blended.layers[1].blended);

  stack.unmapped(1);
  const ScenePlan open = planScene(stack, composited);
  EXPECT_FALSE(open.covered);
  EXPECT_EQ(open.background, composited.background);
}

TEST(ScenePlan, StaysTheSameForWhatDoesNotShow) {
  const DeviceRect frame{100, 100, 50, 50};
  auto stack = stackOf({windowAt(1, {0, 0, 10, 10}), windowAt(2, {90, 90, 100, 100}),
                        windowAt(ourBase + 1, {0, 0, 500, 500})});
  const ScenePlan before = planScene(stack, viewOf(frame));
  stack.configured(ourBase + 1, {5, 5, 600, 600}, 0, 2);
  stack.configured(1, {20, 20, 10, 10}, 0, 0);
  stack.unmapped(1);
  EXPECT_EQ(planScene(stack, viewOf(frame)), before);
  stack.configured(2, {91, 90, 100, 100}, 0, 1);
  EXPECT_FALSE(planScene(stack, viewOf(frame)) == before);
}

TEST(ScenePlan, StaysOnItsMonitor) {
  const auto stack = stackOf({windowAt(1, {-100, -100, 5000, 5000})});
  const ScenePlan plan = planScene(stack, viewOf({-20, 990, 100, 100}));
  EXPECT_EQ(plan.screen, (DeviceRect{0, 990, 80, 10}));
  EXPECT_EQ(plan.layers.at(0).visible, plan.screen);
  EXPECT_TRUE(plan.covered);
  EXPECT_TRUE(planScene(stack, viewOf({2000, 0, 10, 10})).layers.empty());
}

}  // namespace
}  // namespace velicor::screencapture
