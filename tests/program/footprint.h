#pragma once

#include <map>
#include <string>

#include "program/stage.h"

namespace velicor::test {

// What a running program holds: the X server's resources by kind with the bytes of its pixmaps, and its own
// descriptors and threads.
std::map<std::string, unsigned> footprintOf(const Stage& stage, const RunningVelicor& velicor);

// In kilobytes.
long residentMemory(const RunningVelicor& velicor);

}  // namespace velicor::test
