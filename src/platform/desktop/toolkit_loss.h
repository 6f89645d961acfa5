#pragma once

namespace velicor::desktop::toolkit {

// The library below the toolkit ends the process when its connection to the X server breaks, with a line of its
// own. From now on it calls `handler` first, on the thread that noticed; a handler that does not return keeps it
// silent. Main thread.
void setLossHandler(void (*handler)());

}  // namespace velicor::desktop::toolkit
