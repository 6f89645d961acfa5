#include "platform/gpu/encoders.h"

#include <string>
#include <utility>

#include "platform/gpu/command_buffer.h"
#include "platform/gpu/device.h"
#include "platform/gpu/misuse.h"

namespace velicor::gpu {

namespace {

std::size_t checkedIndex(int index, int limit) {
  require(index >= 0 && index < limit, "a binding index out of range");
  return static_cast<std::size_t>(index);
}

bool holds(const Buffer& buffer, std::size_t offset, std::size_t length) {
  return offset <= buffer.length() && length <= buffer.length() - offset;
}

bool isPlane(const GridSize& grid) { return grid.width > 0 && grid.height > 0 && grid.depth == 1; }

}  // namespace

Encoder::Encoder(std::shared_ptr<CommandBuffer> commandBuffer) : commandBuffer_(std::move(commandBuffer)) {
  commandBuffer_->openEncoder();
}

Encoder::~Encoder() {
  if (commandBuffer_) commandBuffer_->closeEncoder();
}

void Encoder::endEncoding() {
  requireOpen();
  onEnd();
  commandBuffer_->closeEncoder();
  commandBuffer_ = nullptr;
}

const std::shared_ptr<Device>& Encoder::device() const {
  requireOpen();
  return commandBuffer_->device();
}

void Encoder::requireOpen() const { require(commandBuffer_ != nullptr, "an encoder is used after its end"); }

Recording& Encoder::recording() const {
  requireOpen();
  return *commandBuffer_->recording_;
}

void Encoder::record(Pass pass) { recording().passes.push_back(std::move(pass)); }

InlineBytes Encoder::keep(std::span<const std::byte> bytes) const {
  require(!bytes.empty() && bytes.size() <= maxInlineBytes, "inline bytes of no or too large a size");
  return recording().keep(bytes);
}

void BlitEncoder::copy(TextureCopy copy) {
  const auto& [source, sourceOrigin, size, destination, destinationOrigin] = copy;
  require(source && source->device() == device(), "a copy from no texture, or another device's");
  require(destination && destination->device() == device(), "a copy to no texture, or another device's");
  require(source != destination, "a copy of a texture to itself");
  require(source->pixelFormat() == destination->pixelFormat(), "a copy between two pixel formats");
  require(fits({sourceOrigin, size}, source->size()), "a copy from outside its texture");
  require(fits({destinationOrigin, size}, destination->size()), "a copy to outside its texture");
  record(std::move(copy));
}

void BlitEncoder::copy(BufferCopy copy) {
  require(copy.source && copy.source->device() == device(), "a copy from no buffer, or another device's");
  require(copy.destination && copy.destination->device() == device(),
          "a copy to no buffer, or another device's");
  require(copy.source != copy.destination, "a copy of a buffer to itself");
  require(copy.length > 0 && holds(*copy.source, copy.sourceOffset, copy.length),
          "a copy from outside its buffer");
  require(holds(*copy.destination, copy.destinationOffset, copy.length), "a copy to outside its buffer");
  record(std::move(copy));
}

void BlitEncoder::fill(BufferFill fill) {
  require(fill.buffer && fill.buffer->device() == device(), "a fill of no buffer, or another device's");
  require(fill.length > 0 && holds(*fill.buffer, fill.offset, fill.length), "a fill outside its buffer");
  record(std::move(fill));
}

void ComputeEncoder::setPipeline(std::shared_ptr<ComputePipeline> pipeline) {
  require(pipeline && pipeline->device() == device(), "no compute pipeline, or another device's");
  pipeline_ = std::move(pipeline);
}

void ComputeEncoder::setTexture(std::shared_ptr<Texture> texture, int index) {
  require(texture && texture->device() == device(), "no texture to bind, or another device's");
  require(texture->usage() != TextureUsage::none && texture->usage() != TextureUsage::renderTarget,
          "a texture that functions may not use is bound");
  bindings_.textures[checkedIndex(index, maxTextureBindings)] = std::move(texture);
}

void ComputeEncoder::setBuffer(std::shared_ptr<Buffer> buffer, std::size_t offset, int index) {
  require(buffer && buffer->device() == device(), "no buffer to bind, or another device's");
  require(holds(*buffer, offset, 1), "a buffer is bound from behind its end");
  require(offset % bufferBindingAlignment == 0, "a buffer is bound from an offset that is not aligned");
  bindings_.buffers[checkedIndex(index, maxBufferBindings)] = BufferSlice{std::move(buffer), offset};
}

void ComputeEncoder::setBytes(std::span<const std::byte> bytes, int index) {
  bindings_.buffers[checkedIndex(index, maxBufferBindings)] = keep(bytes);
}

void ComputeEncoder::dispatchThreadgroups(GridSize threadgroups, GridSize threadsPerThreadgroup) {
  require(pipeline_ != nullptr, "a dispatch without a pipeline");
  require(isPlane(threadgroups) && isPlane(threadsPerThreadgroup), "a dispatch over no or a deep grid");
  record(Dispatch{pipeline_, bindings_, threadgroups, threadsPerThreadgroup});
}

RenderEncoder::RenderEncoder(std::shared_ptr<CommandBuffer> commandBuffer, RenderTarget target)
    : Encoder(std::move(commandBuffer)),
      pass_{std::move(target.texture), target.clearColor, recording().draws.size(), 0} {}

RenderEncoder::~RenderEncoder() { RenderEncoder::onEnd(); }

void RenderEncoder::setPipeline(std::shared_ptr<RenderPipeline> pipeline) {
  require(pipeline && pipeline->device() == device(), "no render pipeline, or another device's");
  require(pipeline->colorFormat() == pass_.target->pixelFormat(), "a pipeline for another pixel format");
  pipeline_ = std::move(pipeline);
}

void RenderEncoder::setVertexBytes(std::span<const std::byte> bytes, int index) {
  vertex_.buffers[checkedIndex(index, maxBufferBindings)] = keep(bytes);
}

void RenderEncoder::setFragmentTexture(std::shared_ptr<Texture> texture, int index) {
  require(texture && texture->device() == device(), "no texture to draw, or another device's");
  require(allows(texture->usage(), TextureUsage::shaderRead), "a texture that can't be read is drawn");
  require(texture != pass_.target, "a texture is drawn into itself");
  fragment_.textures[checkedIndex(index, maxTextureBindings)] = std::move(texture);
}

void RenderEncoder::drawTriangles(int vertexStart, int vertexCount) {
  require(pipeline_ != nullptr, "a draw without a pipeline");
  require(vertexStart >= 0 && vertexCount > 0 && vertexCount % 3 == 0, "a draw of no whole triangles");
  recording().draws.push_back({pipeline_, vertex_, fragment_, vertexStart, vertexCount});
  ++pass_.drawCount;
}

void RenderEncoder::onEnd() {
  if (pass_.target) record(std::exchange(pass_, {}));
}

}  // namespace velicor::gpu
