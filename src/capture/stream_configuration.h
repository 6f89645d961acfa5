#pragma once

#include "platform/base/geometry.h"
#include "platform/desktop/screen.h"
#include "platform/screencapture/screen_capture.h"

// What a capture stream is asked for: pure functions of the session's inputs.
namespace velicor {

// The configuration that captures `region` (desktop points) of a screen at its backing resolution, at most
// `fps` times a second (anything below 1 counts as 1). The region is clipped to the screen; where less than
// 2 × 2 points are left it is the screen's top-left 2 × 2 points.
screencapture::StreamConfiguration streamConfiguration(const DesktopRect& region,
                                                       const desktop::Screen& screen, int fps);

// Those of the listed applications that are this one, by process or by bundle identifier; in the list's
// order.
std::vector<screencapture::RunningApplication> ownApplications(
    const screencapture::ShareableContent& content);

// The listed display with this identifier, or none.
std::optional<screencapture::Display> findDisplay(const screencapture::ShareableContent& content,
                                                  std::uint32_t displayID);

}  // namespace velicor
