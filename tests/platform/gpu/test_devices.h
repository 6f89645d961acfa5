#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/gpu/device.h"
#include "platform/gpu/native/native_device.h"
#include "platform/gpu/vulkan/vulkan_device.h"

namespace velicor::gpu::test {

// A device that the same tests run on.
struct TestDevice {
  std::string name;
  std::shared_ptr<Device> (*make)();
};

// Vulkan as far as this machine has it, down to drivers in software, with the validation layer on: a
// complaint fails the test. Throws where the machine lacks either. Drivers stay loaded from the first one on:
// tests that make devices otherwise make one of these before, or the leak checker meets memory of a driver
// that is gone.
std::shared_ptr<Device> makeCheckedVulkanDevice(VulkanOptions options = {});

inline std::vector<TestDevice> allDevices() {
  return {{"native", makeNativeDevice}, {"vulkan", [] { return makeCheckedVulkanDevice(); }}};
}

inline std::string deviceName(const testing::TestParamInfo<TestDevice>& info) { return info.param.name; }

}  // namespace velicor::gpu::test
