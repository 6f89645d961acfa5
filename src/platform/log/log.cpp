#include "platform/log/log.h"

#include <cstdio>
#include <mutex>
#include <utility>

namespace velicor::log {

namespace {

void writeToStandardError(const Entry& entry) {
  std::string line = "velicor";
  if (!entry.category.empty()) line += "[" + entry.category + "]";
  if (entry.level == Level::error) line += " error";
  line += ": " + entry.text + "\n";
  // One call, so that lines of several threads or processes never mix.
  std::fwrite(line.data(), 1, line.size(), stderr);
}

struct Receiver {
  std::mutex mutex;
  Sink sink = writeToStandardError;
};

Receiver& receiver() {
  static auto* const instance = new Receiver;  // outlives every other static: destructors log too
  return *instance;
}

void emit(Level level, std::string_view category, std::string_view text) {
  const Entry entry{level, std::string(category), std::string(text)};
  const std::scoped_lock guard(receiver().mutex);
  receiver().sink(entry);
}

}  // namespace

Sink setSink(Sink sink) {
  const std::scoped_lock guard(receiver().mutex);
  return std::exchange(receiver().sink, sink ? std::move(sink) : Sink(writeToStandardError));
}

void Logger::info(std::string_view text) const { emit(Level::info, category_, text); }

void Logger::error(std::string_view text) const { emit(Level::error, category_, text); }

void general(std::string_view text) { emit(Level::info, {}, text); }

}  // namespace velicor::log
