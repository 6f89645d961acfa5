#pragma once

#include <string_view>

namespace velicor::gpu {

// A call that can only come from a mistake in the program: one log line, then the process ends. What can go
// wrong at run time (no memory, a lost device) is answered with nullptr instead.
[[noreturn]] void misuse(std::string_view what);

inline void require(bool condition, std::string_view what) {
  if (!condition) misuse(what);
}

}  // namespace velicor::gpu
