#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "platform/base/ring.h"
#include "platform/dispatch/main_queue.h"

namespace velicor::dispatch {

enum class Priority { userInteractive, background };

// A thread of its own that runs jobs one at a time, in the order they came.
class SerialQueue {
 public:
  // The label is the thread's name (the system keeps its first 15 characters). A raised priority is asked
  // for and silently done without where the system does not grant it.
  explicit SerialQueue(std::string label, Priority priority = Priority::background);

  // Runs what is still queued, then ends the thread. Never called from a job of this queue.
  ~SerialQueue();
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  // Any thread.
  void async(Job job);

  // Any other thread: returns when all jobs queued before the call have run.
  void drain();

  const std::string& label() const { return label_; }

 private:
  void run();

  const std::string label_;
  const Priority priority_;
  std::mutex mutex_;
  std::condition_variable changed_;
  Ring<Job> jobs_;
  bool ending_ = false;
  std::thread thread_;
};

// The process's one background queue, for work that nobody waits for.
SerialQueue& backgroundQueue();

}  // namespace velicor::dispatch
