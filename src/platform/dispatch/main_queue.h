#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/base/callable.h"
#include "platform/base/ring.h"

namespace velicor::dispatch {

// One that holds a reference or two is queued without taking memory.
using Job = Callable<void(), 32>;

// The main thread's queue. Jobs run one at a time on the main thread, in the order they came, on a later turn
// of the event loop than the one that queued them.
//
// The queue itself stands on a standard mutex (so that the thread sanitizer follows what it hands over); the
// toolkit's event loop is only woken up. Without an event loop, runPending() serves the queue by hand.
class MainQueue {
 public:
  static MainQueue& shared();

  // Any thread.
  void async(Job job);

  // Makes the calling thread the main thread and lets its event loop serve the queue. Needs a
  // QCoreApplication. Called once by main() before anything else of ours runs; again after detach().
  void attach();

  // Stops serving; jobs that wait stay. Called before the QCoreApplication goes.
  void detach();

  // Main thread. Runs the jobs that wait now, not those they add; returns how many ran.
  std::size_t runPending();

  // Whether the calling thread is the main thread.
  bool isCurrent() const;

 private:
  MainQueue();
  ~MainQueue();
  void wake();  // with mutex_ held

  class EventLoopBell;
  mutable std::mutex mutex_;
  Ring<Job> jobs_;
  bool ringing_ = false;
  std::thread::id thread_ = std::this_thread::get_id();
  std::unique_ptr<EventLoopBell> bell_;
};

}  // namespace velicor::dispatch
