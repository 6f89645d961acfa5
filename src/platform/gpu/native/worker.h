#pragma once

#include <memory>
#include <thread>

#include "platform/gpu/passes.h"

namespace velicor::gpu {

// The native device's thread: executes submissions one after the other in the order they came, and calls
// their `finished` between.
class Worker {
 public:
  // Throws std::system_error where no thread can be had.
  Worker();

  // Executes what is still queued. May itself run on the worker's thread, when the last reference to the
  // device is let go there: the thread then ends by itself.
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  void submit(Submission submission);

 private:
  struct State;
  static void run(const std::shared_ptr<State>& state);

  std::shared_ptr<State> state_;
  std::thread thread_;
};

}  // namespace velicor::gpu
