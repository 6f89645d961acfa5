#include "program/footprint.h"

#include <filesystem>
#include <fstream>

namespace velicor::test {

namespace {

unsigned entriesOf(const RunningVelicor& velicor, const std::string& folder) {
  const std::filesystem::directory_iterator entries("/proc/" + std::to_string(velicor.processID()) + folder);
  return static_cast<unsigned>(std::distance(begin(entries), end(entries)));
}

}  // namespace

std::map<std::string, unsigned> footprintOf(const Stage& stage, const RunningVelicor& velicor) {
  auto counts = stage.painter().resourcesOf(static_cast<std::uint32_t>(velicor.processID()));
  counts.erase("XFixesRegion");  // a few that the capture keeps from when it first needs them
  counts["descriptors"] = entriesOf(velicor, "/fd");
  counts["threads"] = entriesOf(velicor, "/task");
  return counts;
}

std::map<std::string, unsigned> beyond(const std::map<std::string, unsigned>& before,
                                       const std::map<std::string, unsigned>& now) {
  std::map<std::string, unsigned> more = now;
  std::erase_if(more, [&](const auto& count) {
    const auto earlier = before.find(count.first);
    return earlier != before.end() && count.second <= earlier->second;
  });
  return more;
}

long residentMemory(const RunningVelicor& velicor) {
  std::ifstream status("/proc/" + std::to_string(velicor.processID()) + "/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmRSS:")) return std::stol(line.substr(6));
  return 0;
}

}  // namespace velicor::test
