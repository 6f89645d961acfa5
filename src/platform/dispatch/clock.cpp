#include "platform/dispatch/clock.h"

#include <list>
#include <utility>

#include <QTimer>

namespace velicor::dispatch {

namespace {

class SystemClock : public Clock {
 public:
  Instant now() const override { return std::chrono::steady_clock::now(); }

  void callAfter(Duration delay, Job job) override {
    const auto place = waiting_.insert(waiting_.end(), std::move(job));
    QTimer::singleShot(std::chrono::ceil<std::chrono::milliseconds>(delay), Qt::PreciseTimer, [this, place] {
      const Job due = std::move(*place);
      waiting_.erase(place);
      due();
    });
  }

 private:
  std::list<Job> waiting_;
};

}  // namespace

Clock& systemClock() {
  // What still waits when the program ends is kept: the coroutines behind it never continue, and are not lost
  // either.
  static auto* const clock = new SystemClock;
  return *clock;
}

Completion<void> sleep(Clock& clock, Duration delay) {
  Completion<void> completion;
  clock.callAfter(delay, [completion] { completion.resolve(); });
  return completion;
}

}  // namespace velicor::dispatch
