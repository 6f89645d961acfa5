#pragma once

#include "platform/gpu/vulkan/device_context.h"

// What a device is asked to show before it is used. The thread that made it, which waits for some seconds at
// most: what doesn't end by then counts as lost, and nothing of it is freed.
namespace velicor::gpu::vulkan {

// Has one pixel painted and read back. Throws vk::SystemError where that fails.
void tryWork(const ContextRef& context);

// Whether the device really reads shared mappings of main memory where they lie: drivers that offer it have
// been seen to refuse memory that belongs to a file. Tries it with one pixel. Throws vk::DeviceLostError
// where the device does not survive that.
bool canImport(const ContextRef& context);

}  // namespace velicor::gpu::vulkan
