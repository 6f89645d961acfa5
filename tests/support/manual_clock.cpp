#include "support/manual_clock.h"

#include <utility>

#include "support/main_loop.h"

namespace velicor::test {

void ManualClock::callAfter(dispatch::Duration delay, dispatch::Job job) {
  jobs_.emplace(now_ + delay, std::move(job));
}

void ManualClock::advance(dispatch::Duration amount) {
  const dispatch::Instant end = now_ + amount;
  settle();
  while (!jobs_.empty() && jobs_.begin()->first <= end) {
    now_ = std::max(now_, jobs_.begin()->first);
    const dispatch::Job job = std::move(jobs_.begin()->second);
    jobs_.erase(jobs_.begin());
    job();
    settle();
  }
  now_ = std::max(now_, end);
}

}  // namespace velicor::test
