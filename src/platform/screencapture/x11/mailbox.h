#pragma once

#include <functional>
#include <mutex>
#include <vector>

namespace velicor::screencapture {

// Work for a thread that waits on file descriptors.
class Mailbox {
 public:
  using Job = std::function<void()>;

  Mailbox();
  ~Mailbox();
  Mailbox(const Mailbox&) = delete;
  Mailbox& operator=(const Mailbox&) = delete;

  // Any thread. False after close(): the job was not taken.
  bool post(Job job);

  // Any thread. Makes the descriptor readable without a job.
  void wake();

  // The receiving thread: all jobs since the last call. Readable until they were taken.
  std::vector<Job> takeAll();
  int fileDescriptor() const { return event_; }

  // Takes no further jobs; what is inside can still be taken.
  void close();

 private:
  const int event_;
  std::mutex mutex_;
  std::vector<Job> jobs_;
  bool closed_ = false;
};

}  // namespace velicor::screencapture
