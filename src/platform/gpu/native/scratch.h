#pragma once

#include <cstddef>
#include <span>

namespace velicor::gpu {

// Memory of the calling thread that a function may use until it returns or asks again; the contents are
// anything. It grows to the largest request and stays with the thread. Throws std::bad_alloc.
std::span<std::byte> scratchBytes(std::size_t length);

template <typename T>
std::span<T> scratch(std::size_t count) {
  return {reinterpret_cast<T*>(scratchBytes(count * sizeof(T)).data()), count};
}

}  // namespace velicor::gpu
