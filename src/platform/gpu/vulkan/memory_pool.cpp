#include "platform/gpu/vulkan/memory_pool.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <numeric>
#include <utility>

namespace velicor::gpu::vulkan {

namespace {

constexpr vk::DeviceSize smallestBlock = 4096;
constexpr vk::DeviceSize keptBytes = vk::DeviceSize{64} << 20;

// Four sizes between a power of two and the next: a window that is dragged larger meets few new ones.
vk::DeviceSize blockSize(vk::DeviceSize needed) {
  const vk::DeviceSize step = std::bit_floor(std::max(needed, smallestBlock)) / 4;
  return std::max((needed + step - 1) / step * step, smallestBlock);
}

}  // namespace

MemoryPool::MemoryPool(const vk::raii::PhysicalDevice& physical, const vk::raii::Device& device)
    : device_(device), properties_(physical.getMemoryProperties()) {}

std::vector<std::uint32_t> MemoryPool::typesFor(std::uint32_t allowed, MemoryKind kind) const {
  using Property = vk::MemoryPropertyFlagBits;
  const vk::MemoryPropertyFlags needed = kind == MemoryKind::deviceOnly
                                             ? vk::MemoryPropertyFlags()
                                             : Property::eHostVisible | Property::eHostCoherent;
  const vk::MemoryPropertyFlags wanted = kind == MemoryKind::deviceOnly ? Property::eDeviceLocal
                                         : kind == MemoryKind::readBack ? Property::eHostCached
                                                                        : vk::MemoryPropertyFlags();
  // They hold no contents, or need features that are not turned on.
  constexpr auto unfit = Property::eLazilyAllocated | Property::eProtected | Property::eDeviceCoherentAMD |
                         Property::eDeviceUncachedAMD | Property::eRdmaCapableNV;
  std::vector<std::uint32_t> types;
  for (const bool best : {true, false}) {
    for (std::uint32_t i = 0; i < properties_.memoryTypeCount; ++i) {
      const vk::MemoryPropertyFlags flags = properties_.memoryTypes[i].propertyFlags;
      const bool fits = (allowed >> i & 1) != 0 && (flags & needed) == needed && !(flags & unfit);
      if (fits && ((flags & wanted) == wanted) == best) types.push_back(i);
    }
  }
  return types;
}

MemoryPool::Lease MemoryPool::take(const vk::MemoryRequirements& requirements, MemoryKind kind) {
  try {
    return takeFitting(requirements, kind);
  } catch (const vk::OutOfDeviceMemoryError&) {
    if (!freeKept()) throw;
    return takeFitting(requirements, kind);
  }
}

bool MemoryPool::freeKept() {
  std::vector<std::unique_ptr<Block>> gone;  // freed outside the lock
  const std::scoped_lock guard(mutex_);
  gone.swap(kept_);
  return !gone.empty();
}

MemoryPool::Lease MemoryPool::takeFitting(const vk::MemoryRequirements& requirements, MemoryKind kind) {
  const std::vector<std::uint32_t> types = typesFor(requirements.memoryTypeBits, kind);
  for (const std::uint32_t type : types) {
    try {
      auto block = takeKept(type, requirements.size);
      if (!block) block = allocate(type, requirements.size);
      if (kind != MemoryKind::deviceOnly && !block->bytes)
        block->bytes = static_cast<std::byte*>(block->memory.mapMemory(0, VK_WHOLE_SIZE));
      return {block.release(), {this}};
    } catch (const vk::OutOfDeviceMemoryError&) {
      if (type == types.back()) throw;
    }
  }
  throw vk::OutOfDeviceMemoryError("no fitting memory");
}

std::unique_ptr<MemoryPool::Block> MemoryPool::takeKept(std::uint32_t type, vk::DeviceSize size) {
  const std::scoped_lock guard(mutex_);
  const auto found = std::find_if(kept_.begin(), kept_.end(), [&](const auto& block) {
    return block->type == type && block->size >= size && block->size <= 2 * blockSize(size);
  });
  if (found == kept_.end()) return nullptr;
  auto block = std::move(*found);
  kept_.erase(found);
  return block;
}

std::unique_ptr<MemoryPool::Block> MemoryPool::allocate(std::uint32_t type, vk::DeviceSize size) {
  const vk::MemoryAllocateInfo info(blockSize(size), type);
  return std::make_unique<Block>(
      Block{vk::raii::DeviceMemory(device_, info), info.allocationSize, type, nullptr});
}

void MemoryPool::giveBack(std::unique_ptr<Block> block) {
  if (block->bytes) std::memset(block->bytes, 0, block->size);  // nothing of the screen waits in it
  std::vector<std::unique_ptr<Block>> gone;  // freed outside the lock
  const std::scoped_lock guard(mutex_);
  kept_.push_back(std::move(block));
  auto total = std::accumulate(kept_.begin(), kept_.end(), vk::DeviceSize{0},
                               [](vk::DeviceSize sum, const auto& kept) { return sum + kept->size; });
  while (total > keptBytes) {
    total -= kept_.front()->size;
    gone.push_back(std::move(kept_.front()));
    kept_.erase(kept_.begin());
  }
}

}  // namespace velicor::gpu::vulkan
