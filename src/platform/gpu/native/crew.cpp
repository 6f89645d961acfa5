#include "platform/gpu/native/crew.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <pthread.h>
#include <sched.h>

#include "platform/log/log.h"

namespace velicor::gpu {

namespace {

// Waking a helper takes about as long as a processor needs for a tenth of these pixels.
constexpr std::int64_t pixelsPerThread = 400'000;

// Bands are shorter than a thread's share, so that one that is held up leaves the rest to the others.
constexpr int bandsPerThread = 4;

}  // namespace

class Crew::Helpers {
 public:
  ~Helpers() {
    {
      const std::scoped_lock guard(mutex_);
      ending_ = true;
    }
    woken_.notify_all();
    for (std::thread& thread : threads_)
      thread.join();
  }

  // Fewer than asked for where the system gives no more, which is tried once.
  void ensure(std::size_t count) {
    if (refused_) return;
    try {
      while (threads_.size() < count)
        threads_.emplace_back([this] { help(); });
    } catch (const std::system_error& refusal) {
      refused_ = true;
      log::Logger("gpu").error("no more threads for large frames: " + std::string(refusal.what()));
    }
  }

  void share(const Job& job) {
    {
      const std::scoped_lock guard(mutex_);
      job_ = &job;
      nextBand_ = 0;
    }
    woken_.notify_all();
    workOn(job);
    std::unique_lock guard(mutex_);
    job_ = nullptr;
    idle_.wait(guard, [this] { return busy_ == 0; });
  }

 private:
  void help() {
    pthread_setname_np(pthread_self(), "velicor.helper");
    std::unique_lock guard(mutex_);
    while (true) {
      woken_.wait(guard, [&] { return ending_ || job_ != nullptr; });
      if (ending_) return;
      ++busy_;
      const Job* const job = job_;
      guard.unlock();
      workOn(*job);
      guard.lock();
      // Nothing is left of it: whoever looks at it next would find that out once more.
      if (job_ == job) job_ = nullptr;
      if (--busy_ == 0) idle_.notify_one();
    }
  }

  void workOn(const Job& job) {
    for (int band = nextBand_++; band < job.bands; band = nextBand_++) {
      const auto rowOf = [&](int i) {
        return static_cast<int>(static_cast<std::int64_t>(job.rows) * i / job.bands);
      };
      job.work(job.context, rowOf(band), rowOf(band + 1));
    }
  }

  std::mutex mutex_;
  std::condition_variable woken_;
  std::condition_variable idle_;
  const Job* job_ = nullptr;
  int busy_ = 0;
  bool ending_ = false;
  bool refused_ = false;
  std::atomic<int> nextBand_{0};
  std::vector<std::thread> threads_;
};

Crew::Crew(int threads) : threads_(std::max(threads, 1)) {}

Crew::~Crew() = default;

int Crew::bandsFor(int rows, int pixelsPerRow) const {
  const std::int64_t shares = std::int64_t{rows} * pixelsPerRow / pixelsPerThread;
  const auto threads = static_cast<int>(std::min<std::int64_t>(shares, threads_));
  return threads < 2 ? 1 : std::min(threads * bandsPerThread, rows);
}

void Crew::share(const Job& job) {
  if (!helpers_) helpers_ = std::make_unique<Helpers>();
  helpers_->ensure(static_cast<std::size_t>(std::max(job.bands / bandsPerThread - 1, 0)));
  helpers_->share(job);
}

// Those of the machine may be more: the process may be held to a few.
int allThreads() {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) return CPU_COUNT(&allowed);
  return static_cast<int>(std::thread::hardware_concurrency());
}

}  // namespace velicor::gpu
