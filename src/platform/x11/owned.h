#pragma once

#include <cstdlib>
#include <memory>

namespace velicor::x11 {

struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};

// A reply, event or error that the protocol library handed over.
template <typename T>
using Owned = std::unique_ptr<T, FreeMemory>;

}  // namespace velicor::x11
