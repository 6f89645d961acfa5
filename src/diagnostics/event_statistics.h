#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/dispatch/clock.h"

namespace velicor {

// Counts named events and reports them once a second, from the first event on, for the rest of the process.
class EventStatistics {
 public:
  // Receives one second's counts on the main thread, such as "captured=10 drawn=3": sorted as whole texts,
  // empty for a second without events.
  using Report = std::function<void(const std::string& counts)>;

  // The object must outlive the main queue and the clock's pending calls.
  EventStatistics(dispatch::Clock& clock, Report report);
  EventStatistics(const EventStatistics&) = delete;
  EventStatistics& operator=(const EventStatistics&) = delete;

  // Any thread.
  void tick(std::string_view name);

 private:
  void scheduleReport(dispatch::Instant due);
  std::string takeCounts();

  dispatch::Clock& clock_;
  Report report_;
  std::mutex lock_;
  std::map<std::string, int, std::less<>> counters_;
  bool started_ = false;
};

}  // namespace velicor
