#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <vulkan/vulkan_core.h>

#include "platform/gpu/vulkan/vulkan_device.h"

namespace velicor::gpu::test {

// The system's Vulkan, in which one call fails: of all calls that can fail, counted from 1. The next object
// starts the count anew; devices may outlive it. One at a time.
class FaultAtCall {
 public:
  // With the so manieth of the errors that the function may give, counted round; call 0: none fails.
  explicit FaultAtCall(std::size_t call, std::size_t error = 0);
  FaultAtCall(const FaultAtCall&) = delete;
  FaultAtCall& operator=(const FaultAtCall&) = delete;

  static VulkanEntryPoint entryPoint();

  // The functions that were called since the present object began.
  static std::vector<std::string> calls();

  // Those that a function may give, in the order that they are counted in.
  static const std::vector<VkResult>& errorsOf(std::string_view function);
};

}  // namespace velicor::gpu::test
