#pragma once

#include <string>

#include "platform/base/error.h"

// What the user reads when the capture fails.
namespace velicor::capturetexts {

std::string permissionRequired();

// For a start that failed for good.
std::string messageFor(const Error& error);

// For a stream that ended by itself and is not started again.
std::string streamStopped(const Error& error);

}  // namespace velicor::capturetexts
