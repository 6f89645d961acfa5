#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/gpu/vulkan/recorder.h"
#include "platform/gpu/vulkan/vulkan_device.h"

namespace velicor::gpu::vulkan {

// Executes submissions in the present device context, and makes the next one when that is lost.
class Engine {
 public:
  // nullptr where no context can be made.
  static std::unique_ptr<Engine> make(VulkanOptions options);

  explicit Engine(VulkanOptions options, ContextRef context);

  // None while the device is lost. Any thread.
  ContextRef context() const;

  // How often it was lost. Any thread.
  std::uint64_t lossCount() const { return lossCount_; }

  // The thread that records: hands the work to the device. nullptr where that failed; the submission then has
  // no effect.
  std::unique_ptr<Flight> launch(const Submission& submission);

  // The thread that waits: whether the work was done.
  bool land(std::unique_ptr<Flight> flight);

  // The thread that records, when nothing is under way any more. Whether there is a device again.
  bool rebuild();

  std::chrono::milliseconds rebuildPause() const { return options_.rebuildPause; }

 private:
  ContextRef contextOf(const CommandBuffer& commands) const;
  std::unique_ptr<Flight> takeFlight(const ContextRef& context);
  void reportTimes(const Flight& flight) const;
  void lose();
  void complain(const char* what);

  VulkanOptions options_;
  Recorder recorder_;
  bool complained_ = false;  // the thread that records

  std::atomic<std::uint64_t> lossCount_{0};

  mutable std::mutex mutex_;
  ContextRef context_;
  std::vector<std::unique_ptr<Flight>> idleFlights_;
};

}  // namespace velicor::gpu::vulkan
