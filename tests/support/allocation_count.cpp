#include "support/allocation_count.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>

#include <unistd.h>

namespace {

struct Count {
  std::atomic<pid_t> thread{0};
  std::atomic<int> allocations{0};
};

std::array<Count, 256> counts;
std::atomic<std::size_t> taken{0};
std::atomic<bool> counting{false};
thread_local Count* own = nullptr;

void count() {
  if (!counting.load(std::memory_order_relaxed)) return;
  if (!own) {
    own = &counts[std::min(taken++, counts.size() - 1)];
    own->thread = gettid();
  }
  ++own->allocations;
}

void* allocateOrNone(std::size_t size) noexcept {
  count();
  return std::malloc(std::max<std::size_t>(size, 1));
}

void* allocate(std::size_t size) {
  if (void* const memory = allocateOrNone(size)) return memory;
  throw std::bad_alloc();
}

void* allocate(std::size_t size, std::align_val_t alignment) {
  count();
  const auto unit = std::max(static_cast<std::size_t>(alignment), sizeof(void*));
  if (void* const memory = std::aligned_alloc(unit, (size + unit - 1) / unit * unit)) return memory;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment) { return allocate(size, alignment); }
void* operator new[](std::size_t size, std::align_val_t alignment) { return allocate(size, alignment); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocateOrNone(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocateOrNone(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }

namespace velicor::test {

void startCounting() {
  for (Count& each : counts)
    each.allocations = 0;
  counting = true;
}

std::map<std::string, int> stopCounting() {
  counting = false;
  std::map<std::string, int> byName;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::string name;
    std::getline(std::ifstream(task.path() / "comm"), name);
    const pid_t thread = std::stoi(task.path().filename().string());
    int& sum = byName[name];
    for (const Count& each : counts) {
      if (each.thread == thread) sum += each.allocations;
    }
  }
  return byName;
}

}  // namespace velicor::test
