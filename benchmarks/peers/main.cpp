#include <algorithm>
#include <cstdio>
#include <exception>
#include <string_view>
#include <utility>
#include <vector>

#include <QCoreApplication>

#include "peers/rows.h"
#include "platform/dispatch/main_queue.h"

// Measures Velicor beside its peers and writes a table. Arguments choose groups of rows; without any, all are
// measured.
namespace {

using namespace velicor;

constexpr std::pair<std::string_view, void (*)(benchmarks::Table&)> groups[] = {
    {"analysis", benchmarks::addAnalysisRows}, {"falseColor", benchmarks::addFalseColorRow},
    {"capture", benchmarks::addCaptureRows},   {"work", benchmarks::addWorkRows},
    {"still", benchmarks::addStillRow},        {"latency", benchmarks::addLatencyRows},
    {"start", benchmarks::addStartRow}};

int measure(const std::vector<std::string_view>& wanted) {
  benchmarks::Table table;
  for (const auto& [name, add] : groups) {
    if (wanted.empty() || std::ranges::find(wanted, name) != wanted.end()) add(table);
  }
  std::printf("\n%d of the aims missed.\n", table.misses());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  dispatch::MainQueue::shared().attach();
  int result = 1;
  try {
    result = measure({argv + 1, argv + argc});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "beside_peers: %s\n", error.what());
  }
  dispatch::MainQueue::shared().detach();
  return result;
}
