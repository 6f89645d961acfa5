#include "platform/gpu/native/worker.h"

#include <condition_variable>
#include <mutex>
#include <utility>

#include <pthread.h>

#include "platform/base/ring.h"
#include "platform/gpu/native/execute.h"

namespace velicor::gpu {

struct Worker::State {
  std::mutex mutex;
  std::condition_variable changed;
  Ring<Submission> submissions;
  bool ending = false;
};

Worker::Worker() : state_(std::make_shared<State>()) {
  thread_ = std::thread([state = state_] { run(state); });
}

Worker::~Worker() {
  {
    const std::scoped_lock guard(state_->mutex);
    state_->ending = true;
  }
  state_->changed.notify_one();
  if (thread_.get_id() == std::this_thread::get_id()) {
    thread_.detach();
  } else {
    thread_.join();
  }
}

void Worker::submit(Submission submission) {
  {
    const std::scoped_lock guard(state_->mutex);
    state_->submissions.push(std::move(submission));
  }
  state_->changed.notify_one();
}

void Worker::run(const std::shared_ptr<State>& state) {
  pthread_setname_np(pthread_self(), "velicor.device");
  Crew crew(allThreads());
  std::unique_lock guard(state->mutex);
  while (true) {
    state->changed.wait(guard, [&] { return state->ending || !state->submissions.isEmpty(); });
    if (state->submissions.isEmpty()) return;
    Submission submission = state->submissions.pop();
    guard.unlock();
    execute(*submission.recording, crew);
    submission.finish(true);
    // What the submission holds goes now, outside the lock: it may be the last to hold the device.
    submission = {};
    guard.lock();
  }
}

}  // namespace velicor::gpu
