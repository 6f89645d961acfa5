#pragma once

#include <string>

#include "platform/x11/connection.h"

namespace velicor {

// The part of the system report that the X server has to answer: lines "what: how". Main thread.
std::string displayReport(x11::Connection& server);

}  // namespace velicor
