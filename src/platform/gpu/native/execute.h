#pragma once

#include "platform/gpu/native/crew.h"
#include "platform/gpu/passes.h"

namespace velicor::gpu {

// Does what was recorded on the calling thread, with the crew's help where it is large. All resources are the
// native device's.
void execute(const Recording& recording, Crew& crew);

}  // namespace velicor::gpu
