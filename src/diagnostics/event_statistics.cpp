#include "diagnostics/event_statistics.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/dispatch/main_queue.h"

namespace velicor {

namespace {

constexpr std::chrono::seconds interval{1};

}  // namespace

EventStatistics::EventStatistics(dispatch::Clock& clock, Report report)
    : clock_(clock), report_(std::move(report)) {}

void EventStatistics::tick(std::string_view name) {
  bool first = false;
  {
    const std::scoped_lock guard(lock_);
    const auto found = counters_.find(name);
    if (found != counters_.end()) {
      ++found->second;
    } else {
      counters_.emplace(name, 1);
    }
    first = !std::exchange(started_, true);
  }
  if (first) dispatch::MainQueue::shared().async([this] { scheduleReport(clock_.now() + interval); });
}

void EventStatistics::scheduleReport(dispatch::Instant due) {
  const dispatch::Duration delay = std::max<dispatch::Duration>(due - clock_.now(), dispatch::Duration{0});
  clock_.callAfter(delay, [this, due] {
    report_(takeCounts());
    // After a stall the reports that were missed are not made up for, and the beat stays.
    dispatch::Instant next = due + interval;
    while (next <= clock_.now())
      next += interval;
    scheduleReport(next);
  });
}

std::string EventStatistics::takeCounts() {
  std::map<std::string, int, std::less<>> counters;
  {
    const std::scoped_lock guard(lock_);
    counters.swap(counters_);
  }
  std::vector<std::string> entries;
  for (const auto& [name, count] : counters)
    entries.push_back(name + "=" + std::to_string(count));
  // Not the order of the names: "a-b=1" comes before "a=1".
  std::ranges::sort(entries);
  std::string line;
  for (const std::string& entry : entries)
    line += (line.empty() ? "" : " ") + entry;
  return line;
}

}  // namespace velicor
