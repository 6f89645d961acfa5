#include "platform/gpu/vulkan/recorder.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <variant>

#include "platform/gpu/misuse.h"
#include "platform/gpu/vulkan/accesses.h"
#include "platform/gpu/vulkan/vulkan_pipelines.h"

namespace velicor::gpu::vulkan {

namespace {

VulkanTexture& ours(Texture& texture) { return static_cast<VulkanTexture&>(texture); }
VulkanBuffer& ours(Buffer& buffer) { return static_cast<VulkanBuffer&>(buffer); }
VulkanComputePipeline& ours(ComputePipeline& pipeline) {
  return static_cast<VulkanComputePipeline&>(pipeline);
}
VulkanRenderPipeline& ours(RenderPipeline& pipeline) { return static_cast<VulkanRenderPipeline&>(pipeline); }

std::string_view nameOf(const Pass& pass) {
  struct Names {
    std::string_view operator()(const TextureCopy&) { return "copy"; }
    std::string_view operator()(const BufferCopy&) { return "copy"; }
    std::string_view operator()(const BufferFill&) { return "fill"; }
    std::string_view operator()(const RenderPass&) { return "draw"; }
    std::string_view operator()(const Dispatch& dispatch) { return ours(*dispatch.pipeline).name(); }
  };
  return std::visit(Names(), pass);
}

vk::Offset3D offsetOf(const Origin& origin) { return {origin.x, origin.y, 0}; }

vk::Extent3D extentOf(const Extent& size) {
  return {static_cast<std::uint32_t>(size.width), static_cast<std::uint32_t>(size.height), 1};
}

vk::BufferImageCopy rowsCopy(const VulkanTexture& texture, const Region& rows, const Origin& imageOrigin) {
  const vk::DeviceSize offset = texture.bytesPerRow() * static_cast<std::size_t>(rows.origin.y) +
                                bytesPerPixel * static_cast<std::size_t>(rows.origin.x);
  return {offset,
          static_cast<std::uint32_t>(texture.bytesPerRow() / bytesPerPixel),
          0,
          colorLayer,
          offsetOf(imageOrigin),
          extentOf(rows.size)};
}

// The nearest value that a channel can hold, so that every device clears to the same one.
float channel(double component) {
  return static_cast<float>(std::lround(std::fmin(std::fmax(component, 0.0), 1.0) * 255)) / 255.0F;
}

// Vulkan's y points down.
vk::Viewport upright(const vk::Extent2D& size) {
  const auto height = static_cast<float>(size.height);
  return {0, height, static_cast<float>(size.width), -height, 0, 1};
}

}  // namespace

void Recorder::record(const Recording& recording, Flight& flight) {
  recording_ = &recording;
  flight_ = &flight;
  context_ = flight.context();
  writtenWithRows_.clear();
  flight.restart();
  for (const Pass& pass : recording.passes) {
    std::visit([this](const auto& work) { run(work); }, pass);
    flight.endPass(nameOf(pass));
  }
  readBack();
}

void Recorder::rollBack() {
  for (auto last = usagesBefore_.rbegin(); last != usagesBefore_.rend(); ++last)
    *last->first = last->second;
  for (auto last = newerBefore_.rbegin(); last != newerBefore_.rend(); ++last)
    last->first->rowsAreNewer = last->second;
  sourceStages_ = 0;
  destinationStages_ = 0;
  bufferBarriers_.clear();
  imageBarriers_.clear();
  bound_.clear();
  keep();
}

void Recorder::keep() {
  usagesBefore_.clear();
  newerBefore_.clear();
}

void Recorder::run(const TextureCopy& copy) {
  VulkanTexture& source = ours(*copy.source);
  VulkanTexture& destination = ours(*copy.destination);
  ImageBacking& to = use(destination, accesses::copyToImage, copy.size == destination.size());
  if (source.rowsAreNewer) return copyFromRows(source, copy, to);
  const ImageBacking& from = use(source, accesses::copyFromImage);
  commands().copyImage(*from.image, vk::ImageLayout::eTransferSrcOptimal, *to.image,
                       vk::ImageLayout::eTransferDstOptimal,
                       vk::ImageCopy(colorLayer, offsetOf(copy.sourceOrigin), colorLayer,
                                     offsetOf(copy.destinationOrigin), extentOf(copy.size)));
}

void Recorder::copyFromRows(VulkanTexture& source, const TextureCopy& copy, const ImageBacking& destination) {
  BufferBacking& rows = source.rows(context_);
  touch(rows, accesses::copyFromBuffer);
  commands().copyBufferToImage(*rows.buffer, *destination.image, vk::ImageLayout::eTransferDstOptimal,
                               rowsCopy(source, {copy.sourceOrigin, copy.size}, copy.destinationOrigin));
}

void Recorder::run(const BufferFill& fill) {
  BufferBacking& buffer = ours(*fill.buffer).backing(context_);
  touch(buffer, accesses::copyToBuffer);
  fillWords(buffer, fill);
}

// Whole words are filled, the bytes before and behind them copied.
void Recorder::fillWords(const BufferBacking& buffer, const BufferFill& fill) {
  constexpr std::size_t word = 4;
  const std::array<std::byte, word> value{std::byte{fill.value}, std::byte{fill.value}, std::byte{fill.value},
                                          std::byte{fill.value}};
  const std::size_t end = fill.offset + fill.length;
  const std::size_t firstWord = std::min((fill.offset + word - 1) / word * word, end);
  const std::size_t endWord = std::max(end / word * word, firstWord);
  const auto copyEnds = [&](std::size_t from, std::size_t to) {
    if (from == to) return;
    const vk::DescriptorBufferInfo bytes = flight_->put(value);
    commands().copyBuffer(bytes.buffer, *buffer.buffer, vk::BufferCopy(bytes.offset, from, to - from));
  };
  copyEnds(fill.offset, firstWord);
  if (firstWord != endWord)
    commands().fillBuffer(*buffer.buffer, firstWord, endWord - firstWord, 0x01010101U * fill.value);
  copyEnds(endWord, end);
}

void Recorder::run(const BufferCopy& copy) {
  BufferBacking& from = ours(*copy.source).backing(context_);
  BufferBacking& to = ours(*copy.destination).backing(context_);
  touch(from, accesses::copyFromBuffer);
  touch(to, accesses::copyToBuffer);
  commands().copyBuffer(*from.buffer, *to.buffer,
                        vk::BufferCopy(copy.sourceOffset, copy.destinationOffset, copy.length));
}

void Recorder::run(const Dispatch& dispatch) {
  VulkanComputePipeline& pipeline = ours(*dispatch.pipeline);
  const vk::Pipeline variant = pipeline.variant(context_, dispatch.threadsPerThreadgroup);
  bind(pipeline.facts(), dispatch.bindings, VK_PIPELINE_STAGE_COMPUTE_SHADER_BIT);
  const vk::DescriptorSet arguments = descriptorSet();
  const vk::raii::CommandBuffer& to = commands();
  to.bindPipeline(vk::PipelineBindPoint::eCompute, variant);
  to.bindDescriptorSets(vk::PipelineBindPoint::eCompute, context_->pipelineLayout(), 0, arguments, {});
  to.dispatch(static_cast<std::uint32_t>(dispatch.threadgroups.width),
              static_cast<std::uint32_t>(dispatch.threadgroups.height), 1);
}

void Recorder::run(const RenderPass& pass) {
  draws_.clear();
  for (const Draw& draw : recording_->drawsOf(pass)) {
    VulkanRenderPipeline& pipeline = ours(*draw.pipeline);
    const vk::Pipeline ready = pipeline.pipeline(context_);
    bind(pipeline.vertexFacts(), draw.vertex, VK_PIPELINE_STAGE_VERTEX_SHADER_BIT);
    bind(pipeline.fragmentFacts(), draw.fragment, VK_PIPELINE_STAGE_FRAGMENT_SHADER_BIT);
    draws_.push_back({ready, descriptorSet(), static_cast<std::uint32_t>(draw.vertexStart),
                      static_cast<std::uint32_t>(draw.vertexCount)});
  }
  drawAll(pass, use(ours(*pass.target), accesses::draw, true));
}

void Recorder::drawAll(const RenderPass& pass, const ImageBacking& target) {
  const vk::raii::CommandBuffer& to = commands();
  const auto& [red, green, blue, alpha] = pass.clearColor;
  const vk::ClearValue clear(
      vk::ClearColorValue(std::array{channel(red), channel(green), channel(blue), channel(alpha)}));
  const vk::Extent2D size(static_cast<std::uint32_t>(pass.target->width()),
                          static_cast<std::uint32_t>(pass.target->height()));
  const vk::RenderPassBeginInfo begin(context_->renderPass(pass.target->pixelFormat()), **target.framebuffer,
                                      vk::Rect2D({}, size), clear);
  to.beginRenderPass(begin, vk::SubpassContents::eInline);
  to.setViewport(0, upright(size));
  to.setScissor(0, vk::Rect2D({}, size));
  for (const PreparedDraw& draw : draws_) {
    to.bindPipeline(vk::PipelineBindPoint::eGraphics, draw.pipeline);
    to.bindDescriptorSets(vk::PipelineBindPoint::eGraphics, context_->pipelineLayout(), 0, draw.arguments,
                          {});
    to.draw(draw.count, 1, draw.start, 0);
  }
  to.endRenderPass();
}

void Recorder::readBack() {
  for (const auto& presented : recording_->presented)
    download(static_cast<VulkanDrawableTarget&>(*presented->target()).target());
  for (VulkanTexture* texture : writtenWithRows_)
    download(*texture);
  using Memory = vk::AccessFlagBits;
  using Stage = vk::PipelineStageFlagBits;
  commands().pipelineBarrier(
      Stage::eTransfer | Stage::eComputeShader | Stage::eFragmentShader, Stage::eHost, {},
      vk::MemoryBarrier(Memory::eTransferWrite | Memory::eShaderWrite, Memory::eHostRead), {}, {});
}

}  // namespace velicor::gpu::vulkan
