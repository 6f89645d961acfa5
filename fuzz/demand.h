#pragma once

#include <cstdio>
#include <cstdlib>

namespace velicor::fuzz {

// Ends the program, so that the fuzzer keeps the input that broke what must hold.
inline void demand(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "broken: %s\n", what);
  std::abort();
}

}  // namespace velicor::fuzz
