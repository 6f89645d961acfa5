#include "support/log_recorder.h"

#include <algorithm>

namespace velicor::test {

LogRecorder::LogRecorder() {
  previous_ = log::setSink([this](const log::Entry& entry) {
    const char* level = entry.level == log::Level::error ? "error" : "info";
    const std::scoped_lock guard(mutex_);
    lines_.push_back(entry.category.empty() ? entry.text : entry.category + " " + level + ": " + entry.text);
  });
}

LogRecorder::~LogRecorder() { log::setSink(previous_); }

std::vector<std::string> LogRecorder::lines() const {
  const std::scoped_lock guard(mutex_);
  return lines_;
}

bool LogRecorder::contains(const std::string& line) const {
  const std::vector<std::string> all = lines();
  return std::find(all.begin(), all.end(), line) != all.end();
}

}  // namespace velicor::test
