#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/gpu/vulkan/vulkan_api.h"

namespace velicor::gpu::vulkan {

// What memory is for. deviceOnly is fastest for the device; the others are mapped and coherent, and written
// (upload) or read (readBack) by the main processor.
enum class MemoryKind { deviceOnly, upload, readBack };

// Device memory, one block a resource. Blocks that come back are kept for the next resource of about their
// size, so that frames of changing sizes don't allocate all the time. Any thread.
class MemoryPool {
 public:
  explicit MemoryPool(const vk::raii::PhysicalDevice& physical, const vk::raii::Device& device);

  struct Block {
    vk::raii::DeviceMemory memory;
    vk::DeviceSize size;
    std::uint32_t type;
    std::byte* bytes;  // once mapped for life; nullptr before
  };
  struct GiveBack {
    MemoryPool* pool;
    void operator()(Block* block) const { pool->giveBack(std::unique_ptr<Block>(block)); }
  };
  using Lease = std::unique_ptr<Block, GiveBack>;

  // Throws vk::SystemError where there is no memory.
  Lease take(const vk::MemoryRequirements& requirements, MemoryKind kind);

  // The fitting types of memory, best first.
  std::vector<std::uint32_t> typesFor(std::uint32_t allowed, MemoryKind kind) const;

 private:
  Lease takeFitting(const vk::MemoryRequirements& requirements, MemoryKind kind);
  bool freeKept();  // whether there were any
  std::unique_ptr<Block> takeKept(std::uint32_t type, vk::DeviceSize size);
  std::unique_ptr<Block> allocate(std::uint32_t type, vk::DeviceSize size);
  void giveBack(std::unique_ptr<Block> block);

  const vk::raii::Device& device_;
  vk::PhysicalDeviceMemoryProperties properties_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<Block>> kept_;  // oldest first
};

}  // namespace velicor::gpu::vulkan
