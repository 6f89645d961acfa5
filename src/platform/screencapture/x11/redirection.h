#pragma once

#include <cstdint>
#include <optional>

#include "platform/base/error.h"
#include "platform/x11/connection.h"

namespace velicor::screencapture {

// Every window draws into a pixmap of its own from now on, the parts too that others cover; for as long as
// the connection lives. A compositing manager that does the same is not disturbed, and may come and go.
// Returns why the server refused, if it did.
std::optional<Error> redirectWindows(x11::Connection& connection);

// Whether a window that is viewable draws into a pixmap of its own. A round trip.
bool isRedirected(x11::Connection& connection, std::uint32_t window);

}  // namespace velicor::screencapture
