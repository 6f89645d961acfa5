#pragma once

namespace velicor::controls {

// From here on tooltips are in the colours, the type and the hairline border of panels. Main thread, with an
// application object.
void dressTooltips();

}  // namespace velicor::controls
