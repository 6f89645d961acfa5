#pragma once

#include <cstdlib>

namespace velicor::benchmarks {

// With VELICOR_BRIEF in the environment the programs only show that they work: they do everything, but so little
// of it that the figures say nothing.
template <typename T>
T unlessBrief(T full, T brief) {
  return std::getenv("VELICOR_BRIEF") ? brief : full;
}

}  // namespace velicor::benchmarks
