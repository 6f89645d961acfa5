#include "platform/gpu/native/scratch.h"

#include <algorithm>
#include <new>

#include "platform/gpu/native/native_resources.h"

namespace velicor::gpu {

namespace {

struct Scratch {
  PageMemory memory;
  std::size_t length = 0;
};

}  // namespace

std::span<std::byte> scratchBytes(std::size_t length) {
  thread_local Scratch scratch;
  if (length > scratch.length) {
    const std::size_t grown = std::max(length, 2 * scratch.length);  // a frame that grows under the hand asks often
    scratch = {};
    scratch.memory = allocatePages(grown);
    if (!scratch.memory) throw std::bad_alloc();
    scratch.length = grown;
  }
  return {scratch.memory.get(), length};
}

}  // namespace velicor::gpu
