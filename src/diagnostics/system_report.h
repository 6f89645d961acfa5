#pragma once

#include <memory>
#include <string>

#include "platform/base/error.h"
#include "platform/x11/connection.h"

namespace velicor {

// What the report of a fault should say about the machine: versions, the X server with its extensions and screens,
// window manager, compositing manager, status area, the device that would analyse, and whether there are settings.
// Lines of text. Names neither user nor host nor file, and nothing that is on the screen.
//
// The server as it was reached, or why it was not. Where it was, the toolkit's application object is one with
// windows. Waits for the graphics processors and the message bus, seconds at most. Main thread.
std::string systemReport(const Result<std::unique_ptr<x11::Connection>>& server);

}  // namespace velicor
