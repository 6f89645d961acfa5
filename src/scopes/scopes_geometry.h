#pragma once

#include "platform/base/geometry.h"

// How large the scopes panel and what is in it are. Pure functions; points.
namespace velicor::scopes_geometry {

inline constexpr double panelWidth = 360;
inline constexpr double legendHeight = 34;
inline constexpr double scopeGap = 14;       // between the vectorscope and the parade
inline constexpr double paradeAspect = 3;    // width by height
inline constexpr double vectorscopeAspect = 1;

// The side of the vectorscope, and the width of the parade, in a panel on a screen with that visible height.
double scopeWidth(double visibleHeight);

// Of a panel with the smallest scopes that shows all of itself.
double smallestHeight();

// The panel's place: at the right edge of the visible part of the screen, in the middle of its height.
DesktopRect panelFrame(const DesktopRect& visibleFrame);

}  // namespace velicor::scopes_geometry
