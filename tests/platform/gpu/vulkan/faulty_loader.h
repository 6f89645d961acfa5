#pragma once

#include <atomic>

#include "platform/gpu/vulkan/vulkan_device.h"

namespace velicor::gpu::test {

// The system's Vulkan with functions that fail, or lie, on command. One at a time.
class FaultyLoader {
 public:
  FaultyLoader();
  ~FaultyLoader();
  FaultyLoader(const FaultyLoader&) = delete;
  FaultyLoader& operator=(const FaultyLoader&) = delete;

  VulkanEntryPoint entryPoint() const;

  // So many of the next calls fail.
  std::atomic<int> lostSubmits{0};
  std::atomic<int> lostWaits{0};
  std::atomic<int> refusedDevices{0};
  std::atomic<int> refusedAllocations{0};
  std::atomic<int> refusedCommandPools{0};

  // The drivers say that they are discrete graphics processors.
  std::atomic<bool> looksDiscrete{false};
  // Every driver is there twice.
  std::atomic<bool> doubles{false};

  // Commands don't wait for each other.
  std::atomic<bool> dropsBarriers{false};

  std::atomic<int> allocations{0};
  std::atomic<int> imports{0};  // without the device's own trial
};

}  // namespace velicor::gpu::test
