#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/base/geometry.h"
#include "platform/screencapture/x11/window_stack.h"

// What properties mean that managers and programs set as they like, apart from the asking.
namespace velicor::screencapture {

// As the server has them; empty or none where it has nothing.
struct AppearanceProperties {
  std::vector<std::uint32_t> states;  // _NET_WM_STATE
  std::optional<std::uint32_t> desktop;
  std::optional<std::uint32_t> opacity;        // of the child of the root window
  std::optional<std::uint32_t> clientOpacity;  // of the program's own window
  std::vector<std::uint32_t> opaqueRegion;     // _NET_WM_OPAQUE_REGION of it: four numbers a rectangle
  std::vector<DeviceRect> shape;               // what the child of the root window is cut to
  std::string_view name;

  // Of a frame only.
  std::optional<DeviceRect> clientPlace;  // relative to the inner corner of the frame's border
  std::vector<std::uint32_t> extents;     // _NET_FRAME_EXTENTS: left, right, top, bottom
  bool clientShaped = false;
};

// As the server numbers the states.
struct StateAtoms {
  std::uint32_t hidden;  // minimised windows have it
  std::uint32_t shaded;  // those of which only the title bar shows
};

Appearance appearanceFrom(const AppearanceProperties& properties, const StateAtoms& atoms);

}  // namespace velicor::screencapture
