#include "platform/gpu/native/worker.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

#include <pthread.h>

#include "platform/gpu/native/execute.h"

namespace velicor::gpu {

struct Worker::State {
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<Submission> submissions;
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
    state_->submissions.push_back(std::move(submission));
  }
  state_->changed.notify_one();
}

void Worker::run(const std::shared_ptr<State>& state) {
  pthread_setname_np(pthread_self(), "velicor.device");
  Crew crew(allThreads());
  std::unique_lock guard(state->mutex);
  while (true) {
    state->changed.wait(guard, [&] { return state->ending || !state->submissions.empty(); });
    if (state->submissions.empty()) return;
    Submission submission = std::move(state->submissions.front());
    state->submissions.pop_front();
    guard.unlock();
    for (const Pass& pass : submission.passes)
      execute(pass, crew);
    submission.passes.clear();
    submission.finished(true);
    // What the submission holds goes now, outside the lock: it may be the last to hold the device.
    submission = {};
    guard.lock();
  }
}

}  // namespace velicor::gpu
