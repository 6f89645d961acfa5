#pragma once

#include <chrono>

#include "platform/dispatch/completion.h"
#include "platform/dispatch/main_queue.h"

namespace velicor::dispatch {

using Duration = std::chrono::nanoseconds;
using Instant = std::chrono::steady_clock::time_point;

// Time as the program sees it. Everything that waits gets its clock from outside, so that a test can turn
// minutes into a function call.
class Clock {
 public:
  virtual ~Clock() = default;

  // Monotonic. Any thread.
  virtual Instant now() const = 0;

  // Main thread. Runs the job there once the delay has passed, never before callAfter returns. It can't be
  // taken back: jobs check for themselves whether they still have something to do.
  virtual void callAfter(Duration delay, Job job) = 0;
};

// Real time, on the toolkit's event loop.
Clock& systemClock();

// For `co_await`: continues on the main thread after the delay.
Completion<void> sleep(Clock& clock, Duration delay);

}  // namespace velicor::dispatch
