#pragma once

#include "platform/gpu/vulkan/device_context.h"

namespace velicor::gpu::vulkan {

// Whether the device really reads shared mappings of main memory where they lie: drivers that offer it have
// been seen to refuse memory that belongs to a file. Tries it with one pixel.
bool canImport(const ContextRef& context);

}  // namespace velicor::gpu::vulkan
