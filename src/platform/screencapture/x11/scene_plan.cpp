#include "platform/screencapture/x11/scene_plan.h"

#include <algorithm>

namespace velicor::screencapture {

namespace {

bool isLeftOut(const StackedWindow& window, const x11::ClientSet& leftOut) {
  return leftOut.made(window.id) || (window.client != 0 && leftOut.made(window.client));
}

Layer layerOf(const StackedWindow& window, const DeviceRect& screen, bool composited) {
  Layer layer;
  layer.id = window.id;
  layer.visual = window.visual;
  layer.bounds = window.bounds;
  layer.border = window.border;
  layer.visible = window.bounds.intersection(screen);
  layer.shaped = window.shaped;
  // Without a compositing manager the server shows the colours as they are, whatever alpha says.
  layer.opacity = composited ? window.opacity : fullyOpaque;
  layer.blended = composited && (window.alpha || window.opacity != fullyOpaque);
  layer.pixmapGeneration = window.pixmapGeneration;
  layer.shapeGeneration = window.shaped ? window.shapeGeneration : 0;
  return layer;
}

bool covers(const Layer& layer, const DeviceRect& screen) {
  return !layer.blended && !layer.shaped && layer.visible == screen;
}

}  // namespace

ScenePlan planScene(const WindowStack& stack, const SceneView& view) {
  ScenePlan plan;
  plan.frame = view.frame;
  plan.screen = view.frame.intersection(view.monitor);
  const auto windows = stack.bottomToTop();
  for (auto window = windows.rbegin(); window != windows.rend() && !plan.covered; ++window) {
    const StackedWindow& entry = **window;
    if (!entry.viewable || !entry.drawable || !entry.bounds.intersects(plan.screen)) continue;
    if (isLeftOut(entry, view.leftOut) || stack.isHidden(entry)) continue;
    plan.layers.push_back(layerOf(entry, plan.screen, view.composited));
    plan.covered = covers(plan.layers.back(), plan.screen);
  }
  std::reverse(plan.layers.begin(), plan.layers.end());
  if (!plan.covered) plan.background = view.background;
  return plan;
}

}  // namespace velicor::screencapture
