#pragma once

#include "platform/base/geometry.h"
#include "platform/screencapture/screen_capture.h"

namespace velicor::screencapture {

// The pixels of the root window that a frame shows, for a display that lies at `monitor`: exactly
// configuration.width × configuration.height of them, nothing is ever resampled. The corner is the source
// rectangle's, in device pixels from the display's own corner, rounded to the nearest pixel.
//
// May reach beyond the monitor: what lies there is black.
DeviceRect frameRect(const StreamConfiguration& configuration, const DeviceRect& monitor);

}  // namespace velicor::screencapture
