#pragma once

#include <vector>

#include "platform/screencapture/screen_capture.h"
#include "platform/screencapture/x11/process_directory.h"
#include "platform/screencapture/x11/window_stack.h"
#include "platform/x11/connection.h"
#include "platform/x11/monitors.h"

namespace velicor::screencapture {

// The monitors, and the processes that own top-level windows, in stacking order from the bottom. Our own
// process is listed once one of its windows can be seen: before that there is nothing to leave out. One round
// trip where desktop windows are to be left out, else none.
ShareableContent listContent(x11::Connection& connection, const ContentQuery& query, const WindowStack& stack,
                             const ProcessDirectory& processes, const std::vector<x11::Monitor>& monitors);

}  // namespace velicor::screencapture
