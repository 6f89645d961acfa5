#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/gpu/device.h"
#include "platform/gpu/native/native_device.h"

namespace velicor::gpu::test {

// A device that the same tests run on.
struct TestDevice {
  std::string name;
  std::shared_ptr<Device> (*make)();
};

inline std::vector<TestDevice> allDevices() { return {{"native", makeNativeDevice}}; }

inline std::string deviceName(const testing::TestParamInfo<TestDevice>& info) { return info.param.name; }

}  // namespace velicor::gpu::test
