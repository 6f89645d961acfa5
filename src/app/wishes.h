#pragma once

#include <cstdint>
#include <optional>

#include "analysis/metal_processor.h"
#include "app/command_line.h"

namespace velicor {

// The mode that a start wants to see; none where it wants something else.
std::optional<MetalProcessor::Mode> modeOf(Wish wish);

// Does what another start of the program wants, by the number that it sent. One that a newer version sent brings
// the windows to the front. Main thread, while the user interface is there.
void fulfil(std::uint32_t wish);

}  // namespace velicor
