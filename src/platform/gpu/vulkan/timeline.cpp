#include "platform/gpu/vulkan/timeline.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <utility>
#include <vector>

#include <pthread.h>

#include "platform/base/ring.h"
#include "platform/log/log.h"

namespace velicor::gpu::vulkan {

namespace {

using Clock = std::chrono::steady_clock;

// Enough that the device has the next work at hand when it has finished one.
constexpr std::size_t maxUnderWay = 3;

constexpr int maxPauseDoublings = 6;

// Threads that are ending by themselves, joined before the process tears itself down: they may still be
// closing a driver.
void leaveBehind(std::thread thread) {
  struct Leftovers {
    std::mutex mutex;
    std::vector<std::thread> threads;
  };
  static Leftovers& leftovers = *new Leftovers;
  static const int registered = std::atexit([] {
    std::vector<std::thread> ending;
    {
      const std::scoped_lock guard(leftovers.mutex);
      ending.swap(leftovers.threads);
    }
    for (std::thread& last : ending)
      last.join();
  });
  static_cast<void>(registered);
  const std::scoped_lock guard(leftovers.mutex);
  leftovers.threads.push_back(std::move(thread));
}

struct UnderWay {
  Submission submission;
  std::unique_ptr<Flight> flight;  // none: it could not be launched
};

}  // namespace

struct Timeline::State {
  State(std::unique_ptr<Engine> made, std::function<void()> handler)
      : engine(std::move(made)), onRebuilt(std::move(handler)) {}

  const std::unique_ptr<Engine> engine;
  const std::function<void()> onRebuilt;
  std::mutex mutex;
  std::condition_variable changed;
  Ring<Submission> submissions;
  Ring<UnderWay> underWay;
  bool landing = false;
  bool ending = false;
  int failedRebuilds = 0;
  Clock::time_point nextRebuild{};

  void end() {
    {
      const std::scoped_lock guard(mutex);
      ending = true;
    }
    changed.notify_all();
  }

  // Returns when there is work, or the end; or true when it is time to rebuild the device. One that is lost
  // again at once is not rebuilt in a circle.
  bool awaitsRebuild(std::unique_lock<std::mutex>& guard) {
    const auto hasWork = [this] {
      return ending || (!submissions.isEmpty() && underWay.size() < maxUnderWay);
    };
    changed.wait(guard, [&] { return hasWork() || !engine->context(); });
    return !changed.wait_until(guard, nextRebuild, hasWork);
  }
};

Timeline::Timeline(std::unique_ptr<Engine> engine, std::function<void()> onRebuilt)
    : state_(std::make_shared<State>(std::move(engine), std::move(onRebuilt))) {
  lander_ = std::thread([state = state_] { landAll(state); });
  try {
    launcher_ = std::thread([state = state_] { launchAll(state); });
  } catch (...) {
    state_->end();
    lander_.join();
    throw;
  }
}

Timeline::~Timeline() {
  state_->end();
  launcher_.join();
  if (lander_.get_id() == std::this_thread::get_id()) {
    leaveBehind(std::move(lander_));
  } else {
    lander_.join();
  }
}

void Timeline::submit(Submission submission) {
  {
    const std::scoped_lock guard(state_->mutex);
    state_->submissions.push(std::move(submission));
  }
  state_->changed.notify_all();
}

ContextRef Timeline::context() const { return state_->engine->context(); }

std::uint64_t Timeline::lossCount() const { return state_->engine->lossCount(); }

void Timeline::launchAll(const std::shared_ptr<State>& state) {
  pthread_setname_np(pthread_self(), "velicor.gpu");
  std::unique_lock guard(state->mutex);
  while (true) {
    if (state->awaitsRebuild(guard)) {
      rebuild(*state, guard);
      continue;
    }
    if (state->submissions.isEmpty()) return;
    UnderWay next{state->submissions.pop(), nullptr};
    guard.unlock();
    next.flight = state->engine->launch(next.submission);
    guard.lock();
    state->underWay.push(std::move(next));
    state->changed.notify_all();
  }
}

void Timeline::rebuild(State& state, std::unique_lock<std::mutex>& guard) {
  state.changed.wait(guard, [&] { return state.ending || (state.underWay.isEmpty() && !state.landing); });
  bool isThere = false;
  if (!state.ending) {
    guard.unlock();
    isThere = state.engine->rebuild();
    guard.lock();
  }
  if (state.ending) return;
  if (isThere) {
    log::Logger("gpu").info("the device was rebuilt");
    state.failedRebuilds = 0;
  } else {
    if (state.failedRebuilds == 0)
      log::Logger("gpu").error("the device can't be rebuilt: the analysis pauses");
    state.failedRebuilds = std::min(state.failedRebuilds + 1, maxPauseDoublings);
  }
  state.nextRebuild = Clock::now() + state.engine->rebuildPause() * (1 << state.failedRebuilds);
  if (!isThere) return;
  guard.unlock();
  state.onRebuilt();
  guard.lock();
}

void Timeline::landAll(const std::shared_ptr<State>& state) {
  pthread_setname_np(pthread_self(), "velicor.device");
  std::unique_lock guard(state->mutex);
  while (true) {
    state->changed.wait(guard, [&] { return state->ending || !state->underWay.isEmpty(); });
    if (state->underWay.isEmpty()) return;
    UnderWay next = state->underWay.pop();
    state->landing = true;
    guard.unlock();
    const bool succeeded = next.flight && state->engine->land(std::move(next.flight));
    next.submission.finish(succeeded);
    // What the submission holds goes now, outside the lock: it may be the last to hold the device.
    next = {};
    guard.lock();
    state->landing = false;
    state->changed.notify_all();
  }
}

}  // namespace velicor::gpu::vulkan
