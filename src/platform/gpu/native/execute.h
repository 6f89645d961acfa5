#pragma once

#include "platform/gpu/passes.h"

namespace velicor::gpu {

// Does one recorded pass on the calling thread. All resources are the native device's.
void execute(const Pass& pass);

}  // namespace velicor::gpu
