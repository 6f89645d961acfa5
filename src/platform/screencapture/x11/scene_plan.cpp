#include "platform/screencapture/x11/scene_plan.h"

#include <algorithm>

namespace velicor::screencapture {

namespace {

bool isLeftOut(const StackedWindow& window, const x11::ClientSet& leftOut) {
  return leftOut.made(window.id) || (window.client != 0 && leftOut.made(window.client));
}

// Without a compositing manager the server alone decides what shows: all of a frame within its shape.
DeviceRect paintedPart(const StackedWindow& window, bool composited) {
  const std::optional<DeviceRect>& painted = window.shown.painted;
  if (!composited || !painted) return window.bounds;
  return painted->translatedBy(window.bounds.x + window.border, window.bounds.y + window.border)
      .intersection(window.bounds);
}

std::optional<ClientCut> cutOf(const StackedWindow& window, bool composited) {
  const Appearance& shown = window.shown;
  if (!composited || !shown.clientShaped || !shown.clientPlace) return std::nullopt;
  return ClientCut{window.client, *shown.clientPlace};
}

// Where neither the shape nor what is blended lets anything through.
DeviceRect solidPart(const Layer& layer, const StackedWindow& window) {
  if (layer.cut || (layer.blended && layer.opacity != fullyOpaque)) return {};
  DeviceRect part = layer.visible;
  const auto keep = [&](const std::optional<DeviceRect>& inWindow) {
    const DevicePoint corner{layer.bounds.x + layer.border, layer.bounds.y + layer.border};
    part = inWindow ? part.intersection(inWindow->translatedBy(corner.x, corner.y)) : DeviceRect{};
  };
  if (layer.shaped) keep(window.shown.insideShape);
  if (layer.blended) keep(window.shown.opaque);
  return part;
}

Layer layerOf(const StackedWindow& window, const DeviceRect& screen, bool composited) {
  Layer layer;
  layer.id = window.id;
  layer.visual = window.visual;
  layer.bounds = window.bounds;
  layer.border = window.border;
  layer.visible = paintedPart(window, composited).intersection(screen);
  layer.cut = cutOf(window, composited);
  layer.shaped = window.shaped || layer.cut;
  // Without a compositing manager the server shows the colours as they are, whatever alpha says.
  layer.opacity = composited ? window.shown.opacity : fullyOpaque;
  layer.blended = composited && (window.alpha || window.shown.opacity != fullyOpaque);
  layer.solid = solidPart(layer, window);
  layer.pixmapGeneration = window.pixmapGeneration;
  layer.shapeGeneration = layer.shaped ? window.shapeGeneration : 0;
  return layer;
}

bool isCovered(const DeviceRect& part, const std::vector<Layer>& above) {
  return std::any_of(above.begin(), above.end(),
                     [&](const Layer& layer) { return layer.solid.contains(part); });
}

}  // namespace

ScenePlan planScene(const WindowStack& stack, const SceneView& view) {
  ScenePlan plan;
  plan.frame = view.frame;
  plan.screen = view.frame.intersection(view.monitor);
  const auto windows = stack.visibleBottomToTop();
  for (auto window = windows.rbegin(); window != windows.rend() && !plan.covered; ++window) {
    if (!(*window)->drawable || isLeftOut(**window, view.leftOut)) continue;
    const Layer layer = layerOf(**window, plan.screen, view.composited);
    if (layer.visible.isEmpty() || isCovered(layer.visible, plan.layers)) continue;
    plan.layers.push_back(layer);
    plan.covered = layer.solid == plan.screen;
  }
  std::reverse(plan.layers.begin(), plan.layers.end());
  if (!plan.covered) plan.background = view.background;
  return plan;
}

}  // namespace velicor::screencapture
