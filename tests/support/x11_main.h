#pragma once

#include "support/x_server.h"

namespace velicor::test {

// The private server, 1440 by 900 pixels, that a test program with real windows runs on. Only in programs
// that have x11_main.cpp among their sources.
XServer& xServer();

}  // namespace velicor::test
