#include "platform/gpu/test_devices.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <dlfcn.h>

// What the thread checker is to leave alone: the layer and the driver in software were built without it, so
// that it does not see what orders their threads.
extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
  return "race:libVkLayer_khronos_validation\nmutex:libVkLayer_khronos_validation\n"
         "race:libvulkan_lvp\nmutex:libvulkan_lvp\n";
}

namespace velicor::gpu::test {

namespace {

// Loading a driver and the layer anew for every device takes time, and leak reports need their names.
void keepLoaded() {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    const std::size_t path = line.find('/');
    if (path == std::string::npos || line.find("r-xp") == std::string::npos) continue;
    const std::string file = line.substr(path);
    if (file.find("libvulkan_") != std::string::npos || file.find("libVkLayer_") != std::string::npos)
      dlopen(file.c_str(), RTLD_NOW | RTLD_NODELETE | RTLD_NOLOAD);
  }
}

}  // namespace

std::shared_ptr<Device> makeCheckedVulkanDevice(VulkanOptions options) {
  // The layer itself looks for missing barriers between submissions only when told so from outside.
  setenv("VK_LAYER_ENABLES", "VALIDATION_CHECK_ENABLE_SYNCHRONIZATION_VALIDATION_QUEUE_SUBMIT", 0);
  options.softwareToo = true;
  options.onComplaint = [](std::string_view complaint) { ADD_FAILURE() << complaint; };
  auto device = makeVulkanDevice(std::move(options));
  if (!device) throw std::runtime_error("no Vulkan driver, or no validation layer");
  static const bool kept = (keepLoaded(), true);
  static_cast<void>(kept);
  return device;
}

}  // namespace velicor::gpu::test
