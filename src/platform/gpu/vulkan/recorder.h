#pragma once

#include <array>
#include <utility>
#include <vector>

#include "platform/gpu/passes.h"
#include "platform/gpu/vulkan/flight.h"
#include "platform/gpu/vulkan/shader_facts.h"
#include "platform/gpu/vulkan/shader_interface.h"
#include "platform/gpu/vulkan/vulkan_resources.h"

namespace velicor::gpu::vulkan {

// Turns submissions into Vulkan commands. Barriers come from what each command says that it touches, against
// what the commands before it did, in the order of the submissions. One thread.
class Recorder {
 public:
  // Throws where something that is needed can't be had. Either keep() or rollBack() comes next: what they
  // decide about holds nothing of the submission.
  void record(const Recording& recording, Flight& flight);

  // What was recorded last is on its way.
  void keep();

  // What was recorded since the last keep() is never executed: the resources are as they were before.
  void rollBack();

 private:
  struct PreparedDraw {
    vk::Pipeline pipeline;
    vk::DescriptorSet arguments;
    std::uint32_t start = 0;
    std::uint32_t count = 0;
  };

  void run(const TextureCopy& copy);
  void run(const BufferFill& fill);
  void run(const BufferCopy& copy);
  void run(const Dispatch& dispatch);
  void run(const RenderPass& pass);
  void fillWords(const BufferBacking& buffer, const BufferFill& fill);
  void copyFromRows(VulkanTexture& source, const TextureCopy& copy, const ImageBacking& destination);
  void drawAll(const RenderPass& pass, const ImageBacking& target);  // draws_
  void readBack();

  // Arguments of functions. bind() only lists them; descriptorSet() takes the list.
  void bind(const ShaderFacts& facts, const Bindings& bindings, VkPipelineStageFlags stage);
  void bindTexture(std::uint32_t binding, const std::shared_ptr<Texture>& texture,
                   VkPipelineStageFlags stage);
  void bindBuffer(std::uint32_t binding, const decltype(Bindings::buffers)::value_type& buffer,
                  VkPipelineStageFlags stage);
  vk::DescriptorSet descriptorSet();

  // The texture's image, ready for the access: holding its rows where those are newer, blank where nothing
  // was ever written. An access that overwrites everything needs neither.
  ImageBacking& use(VulkanTexture& texture, const Access& access, bool overwrites = false);
  void upload(VulkanTexture& texture, ImageBacking& image);
  void download(VulkanTexture& texture);
  void blank(ImageBacking& image);
  void setRowsAreNewer(VulkanTexture& texture, bool newer);

  void touch(BufferBacking& buffer, const Access& access);
  void touch(ImageBacking& image, const Access& access);
  void noteWait(const Wait& wait, const Access& access);

  // The command buffer, behind the barriers that were asked for since the last command.
  const vk::raii::CommandBuffer& commands();

  const Recording* recording_ = nullptr;
  Flight* flight_ = nullptr;
  ContextRef context_;
  std::vector<VulkanTexture*> writtenWithRows_;
  std::vector<PreparedDraw> draws_;

  VkPipelineStageFlags sourceStages_ = 0;
  VkPipelineStageFlags destinationStages_ = 0;
  std::vector<vk::BufferMemoryBarrier> bufferBarriers_;
  std::vector<vk::ImageMemoryBarrier> imageBarriers_;

  std::array<vk::DescriptorImageInfo, shader_interface::bindingsEnd> boundImages_;
  std::array<vk::DescriptorBufferInfo, shader_interface::bindingsEnd> boundBuffers_;
  std::vector<vk::WriteDescriptorSet> bound_;

  std::vector<std::pair<Usage*, Usage>> usagesBefore_;
  std::vector<std::pair<VulkanTexture*, bool>> newerBefore_;
};

}  // namespace velicor::gpu::vulkan
