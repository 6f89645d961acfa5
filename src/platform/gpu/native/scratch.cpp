#include "platform/gpu/native/scratch.h"

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
    scratch = {};
    scratch.memory = allocatePages(length);
    if (!scratch.memory) throw std::bad_alloc();
    scratch.length = length;
  }
  return {scratch.memory.get(), length};
}

}  // namespace velicor::gpu
