#include "platform/gpu/native/execute.h"

#include <cmath>
#include <cstring>

#include "platform/gpu/native/native_kernel.h"
#include "platform/gpu/native/native_pipelines.h"
#include "platform/gpu/native/native_resources.h"
#include "platform/gpu/native/rasterizer.h"

namespace velicor::gpu {

namespace {

const NativeImage& imageOf(const Texture& texture) {
  return static_cast<const NativeTexture&>(texture).image();
}

std::span<std::byte> bytesOf(const Buffer& buffer) {
  return static_cast<const NativeBuffer&>(buffer).bytes();
}

std::span<std::byte> bytesOf(const decltype(Bindings::buffers)::value_type& binding) {
  if (const auto* slice = std::get_if<BufferSlice>(&binding))
    return bytesOf(*slice->buffer).subspan(slice->offset);
  if (const auto* bytes = std::get_if<InlineBytes>(&binding)) {
    // Functions take every buffer as writable; inline bytes are theirs alone and never looked at again.
    return {const_cast<std::byte*>(bytes->data()), bytes->size()};
  }
  return {};
}

NativeArguments argumentsFrom(const Bindings& bindings) {
  NativeArguments arguments;
  for (std::size_t i = 0; i < bindings.textures.size(); ++i) {
    if (bindings.textures[i]) arguments.textures[i] = imageOf(*bindings.textures[i]);
  }
  for (std::size_t i = 0; i < bindings.buffers.size(); ++i)
    arguments.buffers[i] = bytesOf(bindings.buffers[i]);
  return arguments;
}

std::byte channelByte(double component) {
  return static_cast<std::byte>(std::lround(std::fmin(std::fmax(component, 0.0), 1.0) * 255));
}

void clear(const NativeImage& image, const ClearColor& color) {
  std::byte pixel[bytesPerPixel] = {channelByte(color.red), channelByte(color.green), channelByte(color.blue),
                                    channelByte(color.alpha)};
  if (image.format == PixelFormat::bgra8Unorm) std::swap(pixel[0], pixel[2]);
  for (int x = 0; x < image.width; ++x)
    std::memcpy(image.pixel(x, 0), pixel, bytesPerPixel);
  const std::size_t rowLength = bytesPerPixel * static_cast<std::size_t>(image.width);
  for (int y = 1; y < image.height; ++y)
    std::memcpy(image.row(y), image.row(0), rowLength);
}

void run(const TextureCopy& copy) {
  const NativeImage& source = imageOf(*copy.source);
  const NativeImage& destination = imageOf(*copy.destination);
  copyRows(destination.pixel(copy.destinationOrigin.x, copy.destinationOrigin.y), destination.bytesPerRow,
           source.pixel(copy.sourceOrigin.x, copy.sourceOrigin.y), source.bytesPerRow,
           bytesPerPixel * static_cast<std::size_t>(copy.size.width), copy.size.height);
}

void run(const BufferFill& fill) {
  std::memset(bytesOf(*fill.buffer).data() + fill.offset, fill.value, fill.length);
}

void run(const BufferCopy& copy) {
  std::memcpy(bytesOf(*copy.destination).data() + copy.destinationOffset,
              bytesOf(*copy.source).data() + copy.sourceOffset, copy.length);
}

void run(const Dispatch& dispatch) {
  const auto& pipeline = static_cast<const NativeComputePipeline&>(*dispatch.pipeline);
  pipeline.function(argumentsFrom(dispatch.bindings),
                    {dispatch.threadgroups.width * dispatch.threadsPerThreadgroup.width, 0,
                     dispatch.threadgroups.height * dispatch.threadsPerThreadgroup.height});
}

void run(const RenderPass& pass) {
  const NativeImage& target = imageOf(*pass.target);
  clear(target, pass.clearColor);
  for (const Draw& draw : pass.draws) {
    const auto& pipeline = static_cast<const NativeRenderPipeline&>(*draw.pipeline);
    const NativeArguments vertex = argumentsFrom(draw.vertex);
    const NativeArguments fragment = argumentsFrom(draw.fragment);
    for (int i = draw.vertexStart; i < draw.vertexStart + draw.vertexCount; i += 3) {
      const Triangle triangle{pipeline.vertex(vertex, i), pipeline.vertex(vertex, i + 1),
                              pipeline.vertex(vertex, i + 2)};
      forEachSpan(triangle, target, [&](const FragmentSpan& span) { pipeline.fragment(fragment, span); });
    }
  }
}

}  // namespace

void execute(const Pass& pass) {
  std::visit([](const auto& work) { run(work); }, pass);
}

}  // namespace velicor::gpu
