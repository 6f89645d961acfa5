#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <sys/types.h>

#include "platform/gpu/device.h"

struct VkInstance_T;

namespace velicor::gpu {

// vkGetInstanceProcAddr: where all Vulkan functions come from.
using VulkanEntryPoint = void (*(*)(VkInstance_T* instance, const char* name))();

// How long the graphics processor took for one pass of a command buffer: a kernel, by its function's name, or
// "copy", "fill", "draw".
struct PassTime {
  std::string name;
  double microseconds = 0;
};

struct VulkanOptions {
  // Drivers that compute on the main processor count too. They are slower than the native device: for tests.
  bool softwareToo = false;

  // Large frames are read where they lie in main memory, where the driver can do that; otherwise, and always
  // where this is false, they are copied into memory of the driver's.
  bool importsFrames = true;

  // Turns the validation layer on, synchronisation included, and gets its complaints, on any thread. Without
  // the layer no device can be made then.
  std::function<void(std::string_view complaint)> onComplaint;

  // Measures every pass and gets the times of each command buffer on a device thread, before its completed
  // handlers run. Not called where the driver can't measure.
  std::function<void(std::span<const PassTime>)> onPassTimes;

  // None: the system's loader, opened at run time.
  VulkanEntryPoint entryPoint = nullptr;

  // A lost device that could not be rebuilt at once is tried again after this time, and then ever more
  // seldom.
  std::chrono::milliseconds rebuildPause{5000};
};

// The best graphics processor that Vulkan offers and that can carry the interface: discrete before integrated
// before virtual ones. nullptr where there is none, or no loader; a processor that could not be used is
// logged.
//
// When it is lost while running, a new one is made behind the same Device. What was begun before fails and
// contents are gone: textures are blank, buffers undefined, but for what the main processor wrote into shared
// ones. Until it is there, and while none can be made, the device refuses work.
std::shared_ptr<Device> makeVulkanDevice(VulkanOptions options = {});

// Finds out whether makeVulkanDevice() has something to choose from. That loads every installed driver, which
// can take tens of megabytes that never come back and has been seen to crash: a process of its own does it, a
// copy of this one, to be made while this one has a single thread. Main thread.
class VulkanProbe {
 public:
  // Starts that process and does not wait for it.
  VulkanProbe();
  ~VulkanProbe();
  VulkanProbe(const VulkanProbe&) = delete;
  VulkanProbe& operator=(const VulkanProbe&) = delete;

  // Waits for the answer. False, with a log line, where none comes.
  bool isWorthLoading();

 private:
  void end();

  pid_t child_ = -1;
  int pipe_ = -1;
  std::optional<bool> answer_;
};

}  // namespace velicor::gpu
