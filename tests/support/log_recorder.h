#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "platform/log/log.h"

namespace velicor::test {

// Takes over the log for its lifetime. Lines read "category level: text", the general log's just "text".
class LogRecorder {
 public:
  LogRecorder();
  ~LogRecorder();
  LogRecorder(const LogRecorder&) = delete;
  LogRecorder& operator=(const LogRecorder&) = delete;

  std::vector<std::string> lines() const;
  bool contains(const std::string& line) const;

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
  log::Sink previous_;
};

}  // namespace velicor::test
