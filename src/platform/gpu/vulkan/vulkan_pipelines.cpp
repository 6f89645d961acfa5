#include "platform/gpu/vulkan/vulkan_pipelines.h"

#include <array>

#include "platform/gpu/vulkan/shader_interface.h"

namespace velicor::gpu::vulkan {

namespace {

constexpr GridSize usualThreads{16, 16, 1};

vk::raii::ShaderModule makeModule(const DeviceContext& context, std::span<const std::uint32_t> spirv,
                                  const std::string& name) {
  vk::raii::ShaderModule module(context.device(),
                                vk::ShaderModuleCreateInfo({}, spirv.size_bytes(), spirv.data()));
  context.setName(*module, name);
  return module;
}

vk::PipelineShaderStageCreateInfo stageInfo(vk::ShaderStageFlagBits stage,
                                            const vk::raii::ShaderModule& module,
                                            const vk::SpecializationInfo* constants = nullptr) {
  return {{}, stage, *module, "main", constants};
}

vk::raii::Pipeline makeComputePipeline(const DeviceContext& context, std::span<const std::uint32_t> spirv,
                                       const std::string& name, const GridSize& threads) {
  const std::array sizes{static_cast<std::uint32_t>(threads.width),
                         static_cast<std::uint32_t>(threads.height)};
  constexpr std::array entries{
      vk::SpecializationMapEntry(shader_interface::threadsAlongX, 0, sizeof(std::uint32_t)),
      vk::SpecializationMapEntry(shader_interface::threadsAlongY, sizeof(std::uint32_t),
                                 sizeof(std::uint32_t))};
  const vk::SpecializationInfo constants(entries.size(), entries.data(), sizeof sizes, sizes.data());
  const vk::raii::ShaderModule module = makeModule(context, spirv, name);
  const vk::ComputePipelineCreateInfo info(
      {}, stageInfo(vk::ShaderStageFlagBits::eCompute, module, &constants), context.pipelineLayout());
  vk::raii::Pipeline pipeline(context.device(), nullptr, info);
  context.setName(*pipeline, name);
  return pipeline;
}

vk::raii::Pipeline makeRenderPipeline(const DeviceContext& context, const vk::raii::ShaderModule& vertex,
                                      const vk::raii::ShaderModule& fragment, PixelFormat format) {
  const std::array stages{stageInfo(vk::ShaderStageFlagBits::eVertex, vertex),
                          stageInfo(vk::ShaderStageFlagBits::eFragment, fragment)};
  const vk::PipelineVertexInputStateCreateInfo noVertices;
  const vk::PipelineInputAssemblyStateCreateInfo triangles({}, vk::PrimitiveTopology::eTriangleList);
  const vk::PipelineViewportStateCreateInfo oneViewport({}, 1, nullptr, 1, nullptr);
  const vk::PipelineRasterizationStateCreateInfo filled(
      {}, VK_FALSE, VK_FALSE, vk::PolygonMode::eFill, vk::CullModeFlagBits::eNone,
      vk::FrontFace::eCounterClockwise, VK_FALSE, 0, 0, 0, 1);
  const vk::PipelineMultisampleStateCreateInfo oneSample;
  vk::PipelineColorBlendAttachmentState replace;
  replace.colorWriteMask = vk::FlagTraits<vk::ColorComponentFlagBits>::allFlags;
  const vk::PipelineColorBlendStateCreateInfo blend({}, VK_FALSE, vk::LogicOp::eCopy, replace);
  constexpr std::array dynamic{vk::DynamicState::eViewport, vk::DynamicState::eScissor};
  const vk::PipelineDynamicStateCreateInfo perTarget({}, dynamic);
  const vk::GraphicsPipelineCreateInfo info({}, stages, &noVertices, &triangles, nullptr, &oneViewport,
                                            &filled, &oneSample, nullptr, &blend, &perTarget,
                                            context.pipelineLayout(), context.renderPass(format), 0);
  return {context.device(), nullptr, info};
}

}  // namespace

VulkanComputePipeline::VulkanComputePipeline(std::shared_ptr<Device> device, const ContextRef& context,
                                             const Function& function, ShaderFacts facts)
    : ComputePipeline(std::move(device)),
      name_(function.name),
      spirv_(function.forms.spirv),
      facts_(std::move(facts)) {
  variant(context, usualThreads);
}

vk::Pipeline VulkanComputePipeline::variant(const ContextRef& context,
                                            const GridSize& threadsPerThreadgroup) {
  if (context_ != context) {
    variants_.clear();
    context_ = context;
  }
  const std::pair key(threadsPerThreadgroup.width, threadsPerThreadgroup.height);
  const auto found = variants_.find(key);
  if (found != variants_.end()) return *found->second;
  auto made = makeComputePipeline(*context, spirv_, name_, threadsPerThreadgroup);
  return *variants_.emplace(key, std::move(made)).first->second;
}

VulkanRenderPipeline::VulkanRenderPipeline(std::shared_ptr<Device> device, const ContextRef& context,
                                           const RenderPipelineDescriptor& descriptor,
                                           ShaderFacts vertexFacts, ShaderFacts fragmentFacts)
    : RenderPipeline(std::move(device), descriptor.colorFormat),
      name_(descriptor.vertexFunction->name + ", " + descriptor.fragmentFunction->name),
      vertexSpirv_(descriptor.vertexFunction->forms.spirv),
      fragmentSpirv_(descriptor.fragmentFunction->forms.spirv),
      vertexFacts_(std::move(vertexFacts)),
      fragmentFacts_(std::move(fragmentFacts)) {
  pipeline(context);
}

vk::Pipeline VulkanRenderPipeline::pipeline(const ContextRef& context) {
  if (context_ != context) {
    const auto vertex = makeModule(*context, vertexSpirv_, name_);
    const auto fragment = makeModule(*context, fragmentSpirv_, name_);
    pipeline_ = makeRenderPipeline(*context, vertex, fragment, colorFormat());
    context->setName(*pipeline_, name_);
    context_ = context;
  }
  return *pipeline_;
}

}  // namespace velicor::gpu::vulkan
