#pragma once

#include <functional>
#include <string>
#include <string_view>

// The program's log: short lines, each with a level and a category. Callable from any thread.
namespace velicor::log {

enum class Level { info, error };

struct Entry {
  Level level;
  std::string category;  // empty for the general log
  std::string text;
};

// Receives every line, one at a time. The default writes to standard error as
// "velicor: TEXT", "velicor[CATEGORY]: TEXT" or "velicor[CATEGORY] error: TEXT".
using Sink = std::function<void(const Entry&)>;

// Replaces the receiver and returns the previous one; an empty sink restores the default.
Sink setSink(Sink sink);

// A source of lines with a category, such as "capture" or "update". Cheap to make and to copy.
class Logger {
 public:
  explicit Logger(std::string_view category) : category_(category) {}
  void info(std::string_view text) const;
  void error(std::string_view text) const;

 private:
  std::string category_;
};

// A line of the general log, without a category.
void general(std::string_view text);

}  // namespace velicor::log
