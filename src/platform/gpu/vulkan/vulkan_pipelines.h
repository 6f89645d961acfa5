#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <utility>

#include "platform/gpu/library.h"
#include "platform/gpu/vulkan/device_context.h"
#include "platform/gpu/vulkan/shader_facts.h"

// Functions made ready in a device context, and again in the next one. Creation and access throw
// vk::SystemError; access is for the thread that records.
namespace velicor::gpu::vulkan {

class VulkanComputePipeline : public ComputePipeline {
 public:
  // The function's SPIR-V is static data.
  VulkanComputePipeline(std::shared_ptr<Device> device, const ContextRef& context, const Function& function,
                        ShaderFacts facts);

  // For dispatches with so many threads a threadgroup; made at the first.
  vk::Pipeline variant(const ContextRef& context, const GridSize& threadsPerThreadgroup);

  const std::string& name() const { return name_; }
  const ShaderFacts& facts() const { return facts_; }

 private:
  std::string name_;
  std::span<const std::uint32_t> spirv_;
  ShaderFacts facts_;
  ContextRef context_;
  std::map<std::pair<int, int>, vk::raii::Pipeline> variants_;
};

class VulkanRenderPipeline : public RenderPipeline {
 public:
  VulkanRenderPipeline(std::shared_ptr<Device> device, const ContextRef& context,
                       const RenderPipelineDescriptor& descriptor, ShaderFacts vertexFacts,
                       ShaderFacts fragmentFacts);

  vk::Pipeline pipeline(const ContextRef& context);
  const ShaderFacts& vertexFacts() const { return vertexFacts_; }
  const ShaderFacts& fragmentFacts() const { return fragmentFacts_; }

 private:
  std::string name_;
  std::span<const std::uint32_t> vertexSpirv_;
  std::span<const std::uint32_t> fragmentSpirv_;
  ShaderFacts vertexFacts_;
  ShaderFacts fragmentFacts_;
  ContextRef context_;
  vk::raii::Pipeline pipeline_{nullptr};
};

}  // namespace velicor::gpu::vulkan
