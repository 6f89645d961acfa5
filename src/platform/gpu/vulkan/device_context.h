#pragma once

#include <memory>
#include <string>

#include "platform/gpu/types.h"
#include "platform/gpu/vulkan/instance.h"
#include "platform/gpu/vulkan/memory_pool.h"
#include "platform/gpu/vulkan/vulkan_api.h"

namespace velicor::gpu::vulkan {

vk::Format formatOf(PixelFormat format);

// One opened graphics processor with what all its work shares. When it is lost another takes its place;
// whatever was made in it holds it, so that it goes last. Any thread but for the queue.
class DeviceContext {
 public:
  // The best candidate that can be opened and carries work; nullptr where there is none. Those that refused
  // are logged. Where reading frames where they lie loses a device, the option is turned off.
  static std::shared_ptr<const DeviceContext> make(VulkanOptions& options);

  // Throws vk::SystemError.
  DeviceContext(std::shared_ptr<const Instance> instance, Instance::Candidate candidate,
                const VulkanOptions& options);
  DeviceContext(const DeviceContext&) = delete;
  DeviceContext& operator=(const DeviceContext&) = delete;

  const vk::raii::Device& device() const { return device_; }
  const vk::raii::Queue& queue() const { return queue_; }  // the thread that submits
  std::uint32_t queueFamily() const { return queueFamily_; }
  const vk::PhysicalDeviceLimits& limits() const { return properties_.limits; }
  std::string name() const { return properties_.deviceName; }
  MemoryPool& memory() const { return memory_; }

  // The layout of every pipeline and every descriptor set, by shader_interface.h.
  vk::DescriptorSetLayout setLayout() const { return *setLayout_; }
  vk::PipelineLayout pipelineLayout() const { return *pipelineLayout_; }

  // Clears its one target and keeps what is drawn; the target is in the layout for drawing before and after.
  vk::RenderPass renderPass(PixelFormat format) const;

  // How pointers and sizes of main memory must be aligned so that it can be read where it lies; 0 where the
  // driver can't.
  vk::DeviceSize importAlignment() const { return importAlignment_; }

  // Ticks of the clock that passes are measured with; 0 where it has none.
  double nanosecondsPerTick() const { return nanosecondsPerTick_; }

  // For the tools that look into a running device.
  template <typename Handle>
  void setName(Handle handle, const std::string& name) const {
    setName(Handle::objectType, reinterpret_cast<std::uint64_t>(static_cast<typename Handle::CType>(handle)),
            name);
  }

 private:
  static std::shared_ptr<const DeviceContext> makeBest(const VulkanOptions& options);
  void setName(vk::ObjectType type, std::uint64_t handle, const std::string& name) const;

  std::shared_ptr<const Instance> instance_;
  vk::raii::PhysicalDevice physical_;
  std::uint32_t queueFamily_;
  vk::PhysicalDeviceProperties properties_;
  vk::DeviceSize importAlignment_;
  double nanosecondsPerTick_;
  vk::raii::Device device_;
  vk::raii::Queue queue_;
  mutable MemoryPool memory_;
  vk::raii::Sampler sampler_;
  vk::raii::DescriptorSetLayout setLayout_;
  vk::raii::PipelineLayout pipelineLayout_;
  vk::raii::RenderPass bgraPass_;
  vk::raii::RenderPass rgbaPass_;
};

using ContextRef = std::shared_ptr<const DeviceContext>;

}  // namespace velicor::gpu::vulkan
