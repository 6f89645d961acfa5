#pragma once

#include <cstdint>
#include <vector>

#include "platform/base/geometry.h"

namespace velicor::desktop {

// The edge strips of the root window that one bar reserves, in device pixels: how far each reaches in, and
// along which stretch of its edge (both ends included).
struct Strut {
  struct Side {
    int depth = 0;
    int start = 0;
    int end = 0;
  };
  Side left;
  Side right;
  Side top;
  Side bottom;
};

// A strut from the property's numbers: twelve, or four of a bar that reserves whole edges. None reserved for
// any other count.
Strut readStrut(const std::vector<std::uint32_t>& numbers, const DeviceRect& root);

// What the bars leave of a monitor. Strips that do not reach into this monitor take nothing from it.
DeviceRect withoutStruts(const DeviceRect& monitor, const DeviceRect& root, const std::vector<Strut>& struts);

}  // namespace velicor::desktop
