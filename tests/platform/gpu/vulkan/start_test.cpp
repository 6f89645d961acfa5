// Which device a start ends on, and what it leaves behind.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include <gmock/gmock.h>

#include "platform/gpu/test_devices.h"
#include "platform/gpu/vulkan/faulty_loader.h"
#include "platform/gpu/vulkan/ranking.h"
#include "support/log_recorder.h"

namespace velicor::gpu::test {
namespace {

using testing::Contains;
using testing::HasSubstr;

// The files that are mapped into this process.
std::set<std::string> mappedFiles() {
  std::set<std::string> files;
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    const std::size_t path = line.find('/');
    if (path != std::string::npos) files.insert(line.substr(path));
  }
  return files;
}

long residentKilobytes() {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word && word != "VmRSS:") {
  }
  long kilobytes = 0;
  status >> kilobytes;
  return kilobytes;
}

// A machine on which the only driver is the one in software.
void leaveSoftwareOnly() {
  for (const auto& driver : std::filesystem::directory_iterator("/usr/share/vulkan/icd.d")) {
    if (driver.path().filename().string().starts_with("lvp_"))
      setenv("VK_ICD_FILENAMES", driver.path().c_str(), 1);
  }
}

TEST(VulkanStart, OnSoftwareOnlyEndsOnTheNativeDeviceAndLeavesNoDriver) {
  leaveSoftwareOnly();
  const auto filesBefore = mappedFiles();
  const long residentBefore = residentKilobytes();
  EXPECT_FALSE(VulkanProbe().isWorthLoading());
  EXPECT_EQ(systemDefaultDevice()->name(), "CPU");
  EXPECT_LT(residentKilobytes() - residentBefore, 10'000);
  EXPECT_EQ(mappedFiles(), filesBefore);
  // What the trial was about is really there.
  EXPECT_THAT(makeCheckedVulkanDevice()->name(), HasSubstr("llvmpipe"));
}

TEST(VulkanStart, RanksByKindAndLeavesOutWhatCannotCarryTheInterface) {
  const vulkan::Traits discrete{VK_PHYSICAL_DEVICE_TYPE_DISCRETE_GPU, VK_API_VERSION_1_2, 0, 256, 16384};
  vulkan::Traits other = discrete;
  int last = *vulkan::rankOf(discrete, false);
  for (const auto type : {VK_PHYSICAL_DEVICE_TYPE_INTEGRATED_GPU, VK_PHYSICAL_DEVICE_TYPE_VIRTUAL_GPU}) {
    other.type = type;
    EXPECT_GT(*vulkan::rankOf(other, false), last);
    last = *vulkan::rankOf(other, false);
  }
  other.type = VK_PHYSICAL_DEVICE_TYPE_CPU;
  EXPECT_EQ(vulkan::rankOf(other, false), std::nullopt);
  EXPECT_GT(*vulkan::rankOf(other, true), last);
  const auto without = [&](auto change) {
    vulkan::Traits traits = discrete;
    change(traits);
    return vulkan::rankOf(traits, true);
  };
  EXPECT_EQ(without([](auto& traits) { traits.apiVersion = VK_API_VERSION_1_1; }), std::nullopt);
  EXPECT_EQ(without([](auto& traits) { traits.queueFamily = {}; }), std::nullopt);
  EXPECT_EQ(without([](auto& traits) { traits.threadsPerThreadgroup = 128; }), std::nullopt);
  EXPECT_EQ(without([](auto& traits) { traits.textureSide = 4096; }), std::nullopt);
}

TEST(VulkanStart, ADriverThatRefusesIsFollowedByTheNext) {
  makeCheckedVulkanDevice();
  FaultyLoader loader;
  const velicor::test::LogRecorder log;
  VulkanOptions options;
  options.entryPoint = loader.entryPoint();
  EXPECT_EQ(makeVulkanDevice(options), nullptr) << "a driver in software is not for users";
  loader.looksDiscrete = true;
  loader.refusedDevices = 1;
  EXPECT_EQ(makeVulkanDevice(options), nullptr);
  EXPECT_THAT(log.lines(), Contains(HasSubstr("can't be used")));
  loader.doubles = true;
  loader.refusedDevices = 1;
  EXPECT_NE(makeVulkanDevice(options), nullptr);
  options.entryPoint = [](VkInstance_T*, const char*) -> void (*)() { return nullptr; };
  EXPECT_EQ(makeVulkanDevice(options), nullptr);
}

}  // namespace
}  // namespace velicor::gpu::test
