#pragma once

#include <map>
#include <string>

#include "program/stage.h"

namespace velicor::test {

// What a running program holds: the X server's resources by kind with the bytes of its pixmaps, and its own
// descriptors and threads.
std::map<std::string, unsigned> footprintOf(const Stage& stage, const RunningVelicor& velicor);

// What of it is more than before. Less is no fault: threads of Qt's and of the network end when they had nothing to do
// for long.
std::map<std::string, unsigned> beyond(const std::map<std::string, unsigned>& before,
                                       const std::map<std::string, unsigned>& now);

// In kilobytes.
long residentMemory(const RunningVelicor& velicor);

}  // namespace velicor::test
