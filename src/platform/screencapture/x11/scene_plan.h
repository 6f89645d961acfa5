#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/base/geometry.h"
#include "platform/screencapture/x11/window_stack.h"
#include "platform/x11/client_set.h"

namespace velicor::screencapture {

// A shaped client whose frame is not cut like it: what lies between the two is not shown.
struct ClientCut {
  WindowId client = 0;
  DeviceRect place;  // of the client, relative to the inner corner of the frame's border

  friend bool operator==(const ClientCut&, const ClientCut&) = default;
};

// One window's part in a frame.
struct Layer {
  WindowId id = 0;
  std::uint32_t visual = 0;
  DeviceRect bounds;  // of the whole window with its border: where its pixmap lies on the root window
  int border = 0;
  DeviceRect visible;   // the part of the bounds that lies inside the frame, without an unpainted margin
  DeviceRect solid;     // a part of that which hides what lies beneath
  bool shaped = false;  // only a part of it shows: its own shape, less the cut
  std::optional<ClientCut> cut;
  bool blended = false;  // what lies beneath shows through
  std::uint32_t opacity = fullyOpaque;
  unsigned pixmapGeneration = 0;
  unsigned shapeGeneration = 0;

  friend bool operator==(const Layer&, const Layer&) = default;
};

// The backdrop of all windows.
struct Background {
  std::uint32_t pixmap = 0;  // tiled from the root window's corner; 0: black
  unsigned generation = 0;

  friend bool operator==(const Background&, const Background&) = default;
};

// What a frame is made of. Two equal plans differ only in what the windows have drawn in between.
struct ScenePlan {
  DeviceRect frame;           // the pixels asked for
  DeviceRect screen;          // those of them that lie on the monitor; the others are black
  std::vector<Layer> layers;  // bottom to top
  bool covered = false;       // the lowest layer fills the screen part: neither backdrop nor black is needed
  Background background;      // the same in all covered plans

  friend bool operator==(const ScenePlan&, const ScenePlan&) = default;
};

// What decides a plan besides the windows themselves.
struct SceneView {
  DeviceRect frame;
  DeviceRect monitor;
  x11::ClientSet leftOut;   // windows that one of these clients made, or whose frame holds such a window
  bool composited = false;  // a compositing manager runs, so alpha and opacity count
  Background background;
};

ScenePlan planScene(const WindowStack& stack, const SceneView& view);

}  // namespace velicor::screencapture
