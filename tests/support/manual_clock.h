#pragma once

#include <map>

#include "platform/dispatch/clock.h"

namespace velicor::test {

// A clock that stands still until the test moves it.
class ManualClock : public dispatch::Clock {
 public:
  dispatch::Instant now() const override { return now_; }
  void callAfter(dispatch::Duration delay, dispatch::Job job) override;

  // Moves the time forward, running what falls due in order of its time, and lets the main queue settle
  // before, after and between.
  void advance(dispatch::Duration amount);

  // Moves the time forward while the main thread does something else; what falls due comes late.
  void pass(dispatch::Duration amount) { now_ += amount; }

  // Jobs that wait for their time.
  std::size_t waiting() const { return jobs_.size(); }

 private:
  dispatch::Instant now_{};
  std::multimap<dispatch::Instant, dispatch::Job> jobs_;
};

}  // namespace velicor::test
