#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/base/error.h"
#include "platform/screencapture/screen_capture.h"
#include "platform/x11/own_clients.h"

namespace velicor::screencapture {

// The capture service on an X server, on a connection and a thread of its own. Fails only where no server can
// be reached; one that does not let us read windows gives a service without access.
//
// To be made before the first window of this process exists, and kept as long as the process: from now on
// every window keeps its whole picture, also where others cover it. What was covered before has to be drawn
// anew by its program first, and would show our own windows until then.
//
// A connection that the server ends, while it goes on, is replaced by another one before any stream says that it
// stopped; streams made from then on run there. `onLost` is called once, on the main thread, when the server went
// away, or ends the next connection at once as well, before any stream says that it stopped. The service does not
// come back then.
Result<std::unique_ptr<Service>> makeX11Service(const std::string& displayName = {},
                                                x11::OwnClients& own = x11::OwnClients::shared(),
                                                std::function<void()> onLost = {});

}  // namespace velicor::screencapture
