#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <thread>

#include "platform/gpu/passes.h"
#include "platform/gpu/vulkan/engine.h"

namespace velicor::gpu::vulkan {

// The device's two threads. One records submissions in the order they came and hands them to the device, up
// to a few ahead; the other waits for them in the same order and calls their `finished`. A device that was
// lost is rebuilt by the first, once the second has reported all that was under way as failed. Where that
// can't be done, it tries again now and then, and what comes in fails too.
class Timeline {
 public:
  // Throws std::system_error where no thread can be had. The handler is called on the first thread when a
  // lost device is there again.
  Timeline(std::unique_ptr<Engine> engine, std::function<void()> onRebuilt);

  // Nothing may be queued any more. May run on the second thread, when the last reference to the device is
  // let go there: that thread then ends by itself.
  ~Timeline();
  Timeline(const Timeline&) = delete;
  Timeline& operator=(const Timeline&) = delete;

  // Any thread; never waits for the device.
  void submit(Submission submission);

  // As engine.h says.
  ContextRef context() const;
  std::uint64_t lossCount() const;

 private:
  struct State;
  static void launchAll(const std::shared_ptr<State>& state);
  static void landAll(const std::shared_ptr<State>& state);
  static void rebuild(State& state, std::unique_lock<std::mutex>& guard);

  std::shared_ptr<State> state_;
  std::thread launcher_;
  std::thread lander_;
};

}  // namespace velicor::gpu::vulkan
