#include "scopes/scopes_geometry.h"

#include <algorithm>

namespace velicor::scopes_geometry {

namespace {

constexpr double restHeight = 372;  // of the panel, without the scopes and the gap between them
constexpr double smallestScope = 160;
constexpr double largestScope = 328;

double wholeHeight(double scope) { return scope + restHeight + scope / paradeAspect + scopeGap; }

}  // namespace

double scopeWidth(double visibleHeight) {
  const double heightPerWidth = 1.3333333333333333;  // of both scopes
  return std::clamp((visibleHeight - restHeight - scopeGap) / heightPerWidth, smallestScope, largestScope);
}

double smallestHeight() { return wholeHeight(smallestScope); }

DesktopRect panelFrame(const DesktopRect& visibleFrame) {
  const double height = std::min(visibleFrame.height, wholeHeight(scopeWidth(visibleFrame.height)));
  return {visibleFrame.maxX() - panelWidth, visibleFrame.midY() - height * 0.5, panelWidth, height};
}

}  // namespace velicor::scopes_geometry
