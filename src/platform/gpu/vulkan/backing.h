#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/gpu/types.h"
#include "platform/gpu/vulkan/device_context.h"
#include "platform/gpu/vulkan/usage.h"

// What stands behind a buffer or a texture in one device context. Creation throws vk::SystemError.
namespace velicor::gpu::vulkan {

// Main memory of somebody else's that is read where it lies: whole pages, which `mapping` keeps there.
struct HostMemory {
  std::byte* bytes;
  std::size_t length;
  std::shared_ptr<const void> mapping;
};

struct BufferBacking {
  BufferBacking(ContextRef context, std::size_t size, MemoryKind kind, const std::string& name);
  BufferBacking(ContextRef context, HostMemory host, const std::string& name);

  std::byte* bytes() const { return memory->bytes; }  // not of deviceOnly or foreign memory

  ContextRef context;
  std::size_t size;
  std::shared_ptr<const void> mapping;
  vk::raii::DeviceMemory imported{nullptr};
  MemoryPool::Lease memory{nullptr, {nullptr}};
  vk::raii::Buffer buffer;
  Usage usage;  // the thread that records
};

struct ImageBacking {
  ImageBacking(ContextRef context, const TextureDescriptor& descriptor, const std::string& name);

  ContextRef context;
  MemoryPool::Lease memory{nullptr, {nullptr}};
  vk::raii::Image image;
  vk::raii::ImageView view{nullptr};
  std::optional<vk::raii::Framebuffer> framebuffer;  // of render targets
  Usage usage;                                       // the thread that records
};

// The one layer and level that images have.
inline constexpr vk::ImageSubresourceLayers colorLayer{vk::ImageAspectFlagBits::eColor, 0, 0, 1};
inline constexpr vk::ImageSubresourceRange colorRange{vk::ImageAspectFlagBits::eColor, 0, 1, 0, 1};

}  // namespace velicor::gpu::vulkan
