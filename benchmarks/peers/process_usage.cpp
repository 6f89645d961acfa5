#include "peers/process_usage.h"

#include <ctime>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace velicor::benchmarks {

namespace {

// The sum of the numbers that follow these words at the beginning of a line.
long long sumOf(const std::filesystem::path& file, std::initializer_list<std::string_view> words) {
  std::ifstream lines(file);
  long long sum = 0;
  for (std::string line; std::getline(lines, line);) {
    for (const std::string_view word : words) {
      if (line.starts_with(word)) sum += std::stoll(line.substr(word.size()));
    }
  }
  return sum;
}

std::filesystem::path folderOf(pid_t process) { return "/proc/" + std::to_string(process); }

}  // namespace

double cpuSeconds(pid_t process) {
  clockid_t clock{};
  timespec used{};
  if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &used) != 0) {
    throw std::runtime_error("a process that is measured has ended");
  }
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

ThreadSwitches contextSwitches(pid_t process) {
  ThreadSwitches result;
  for (const auto& thread : std::filesystem::directory_iterator(folderOf(process) / "task")) {
    result[std::stoi(thread.path().filename())] =
        sumOf(thread.path() / "status", {"voluntary_ctxt_switches:", "nonvoluntary_ctxt_switches:"});
  }
  return result;
}

long long switchesBetween(const ThreadSwitches& before, const ThreadSwitches& after) {
  long long sum = 0;
  for (const auto& [thread, count] : after) {
    const auto earlier = before.find(thread);
    sum += count - (earlier != before.end() ? earlier->second : 0);
  }
  return sum;
}

Memory memoryOf(pid_t process) {
  constexpr double kibibytes = 1.0 / 1024;
  const std::filesystem::path file = folderOf(process) / "smaps_rollup";
  return {kibibytes * static_cast<double>(sumOf(file, {"Rss:"})),
          kibibytes * static_cast<double>(sumOf(file, {"Pss:"}))};
}

}  // namespace velicor::benchmarks
