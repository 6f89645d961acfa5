#pragma once

// The Vulkan bindings as this folder uses them: functions come from the entry point that a device is made
// with, nothing is linked. Slow to compile: include it in sources, and in headers of this folder that need
// it.
#define VK_NO_PROTOTYPES
#define VULKAN_HPP_ENABLE_DYNAMIC_LOADER_TOOL 0
#include <vulkan/vulkan_raii.hpp>
