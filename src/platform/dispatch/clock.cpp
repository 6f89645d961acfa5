#include "platform/dispatch/clock.h"

#include <utility>

#include <QTimer>

namespace velicor::dispatch {

namespace {

class SystemClock : public Clock {
 public:
  Instant now() const override { return std::chrono::steady_clock::now(); }

  void callAfter(Duration delay, Job job) override {
    QTimer::singleShot(std::chrono::ceil<std::chrono::milliseconds>(delay), Qt::PreciseTimer, std::move(job));
  }
};

}  // namespace

Clock& systemClock() {
  static SystemClock clock;
  return clock;
}

Completion<void> sleep(Clock& clock, Duration delay) {
  Completion<void> completion;
  clock.callAfter(delay, [completion] { completion.resolve(); });
  return completion;
}

}  // namespace velicor::dispatch
