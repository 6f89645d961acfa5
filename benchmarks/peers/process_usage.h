#pragma once

#include <map>

#include <sys/types.h>

namespace velicor::benchmarks {

// What a running process, threads that have ended included, has used up so far.
double cpuSeconds(pid_t process);

// How often each of its present threads has been taken off a processor core.
using ThreadSwitches = std::map<pid_t, long long>;
ThreadSwitches contextSwitches(pid_t process);

// From one moment to a later one; threads that have ended between do not count.
long long switchesBetween(const ThreadSwitches& before, const ThreadSwitches& after);

struct Memory {
  double resident = 0;      // MiB
  double proportional = 0;  // MiB: of pages that several processes share, a share each
};
Memory memoryOf(pid_t process);

}  // namespace velicor::benchmarks
