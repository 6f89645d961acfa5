#include "platform/gpu/native/execute.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <utility>

#include "platform/gpu/native/native_kernel.h"
#include "platform/gpu/native/native_pipelines.h"
#include "platform/gpu/native/native_resources.h"
#include "platform/gpu/native/rasterizer.h"

namespace velicor::gpu {

namespace {

// As many rows are cleared before they are drawn into: few enough to be still near the processor then.
constexpr int cachedRows = 16;

const NativeImage& imageOf(const Texture& texture) {
  return static_cast<const NativeTexture&>(texture).image();
}

std::span<std::byte> bytesOf(const Buffer& buffer) {
  return static_cast<const NativeBuffer&>(buffer).bytes();
}

std::span<std::byte> bytesOf(const decltype(Bindings::buffers)::value_type& binding,
                             const Recording& recording) {
  if (const auto* slice = std::get_if<BufferSlice>(&binding))
    return bytesOf(*slice->buffer).subspan(slice->offset);
  if (const auto* bytes = std::get_if<InlineBytes>(&binding)) {
    // Functions take every buffer as writable; inline bytes are never written.
    const std::span<const std::byte> kept = recording.bytesOf(*bytes);
    return {const_cast<std::byte*>(kept.data()), kept.size()};
  }
  return {};
}

NativeArguments argumentsFrom(const Bindings& bindings, const Recording& recording) {
  NativeArguments arguments;
  for (std::size_t i = 0; i < bindings.textures.size(); ++i) {
    if (bindings.textures[i]) arguments.textures[i] = imageOf(*bindings.textures[i]);
  }
  for (std::size_t i = 0; i < bindings.buffers.size(); ++i)
    arguments.buffers[i] = bytesOf(bindings.buffers[i], recording);
  return arguments;
}

std::byte channelByte(double component) {
  return static_cast<std::byte>(std::lround(std::fmin(std::fmax(component, 0.0), 1.0) * 255));
}

std::array<std::byte, bytesPerPixel> pixelOf(const ClearColor& color, PixelFormat format) {
  std::array pixel{channelByte(color.red), channelByte(color.green), channelByte(color.blue),
                   channelByte(color.alpha)};
  if (format == PixelFormat::bgra8Unorm) std::swap(pixel[0], pixel[2]);
  return pixel;
}

void clear(const NativeImage& image, const ClearColor& color, int firstRow, int endRow) {
  const auto pixel = pixelOf(color, image.format);
  for (int x = 0; x < image.width; ++x)
    std::memcpy(image.pixel(x, firstRow), pixel.data(), pixel.size());
  const std::size_t rowLength = bytesPerPixel * static_cast<std::size_t>(image.width);
  for (int y = firstRow + 1; y < endRow; ++y)
    std::memcpy(image.row(y), image.row(firstRow), rowLength);
}

void draw(const Draw& draw, const Recording& recording, const NativeImage& target, int firstRow, int endRow) {
  const auto& pipeline = static_cast<const NativeRenderPipeline&>(*draw.pipeline);
  const NativeArguments vertex = argumentsFrom(draw.vertex, recording);
  const NativeArguments fragment = argumentsFrom(draw.fragment, recording);
  for (int i = draw.vertexStart; i < draw.vertexStart + draw.vertexCount; i += 3) {
    const Triangle triangle{pipeline.vertex(vertex, i), pipeline.vertex(vertex, i + 1),
                            pipeline.vertex(vertex, i + 2)};
    forEachSpan(triangle, target, firstRow, endRow,
                [&](const FragmentSpan& span) { pipeline.fragment(fragment, span); });
  }
}

void run(const TextureCopy& copy, const Recording&, Crew& crew) {
  const NativeImage& source = imageOf(*copy.source);
  const NativeImage& destination = imageOf(*copy.destination);
  crew.forRows(copy.size.height, copy.size.width, [&](int firstRow, int endRow) {
    copyRows(destination.pixel(copy.destinationOrigin.x, copy.destinationOrigin.y + firstRow),
             destination.bytesPerRow, source.pixel(copy.sourceOrigin.x, copy.sourceOrigin.y + firstRow),
             source.bytesPerRow, bytesPerPixel * static_cast<std::size_t>(copy.size.width),
             endRow - firstRow);
  });
}

void run(const BufferFill& fill, const Recording&, Crew&) {
  std::memset(bytesOf(*fill.buffer).data() + fill.offset, fill.value, fill.length);
}

void run(const BufferCopy& copy, const Recording&, Crew&) {
  std::memcpy(bytesOf(*copy.destination).data() + copy.destinationOffset,
              bytesOf(*copy.source).data() + copy.sourceOffset, copy.length);
}

void run(const Dispatch& dispatch, const Recording& recording, Crew& crew) {
  const auto& pipeline = static_cast<const NativeComputePipeline&>(*dispatch.pipeline);
  const NativeArguments arguments = argumentsFrom(dispatch.bindings, recording);
  const int width = dispatch.threadgroups.width * dispatch.threadsPerThreadgroup.width;
  const int height = dispatch.threadgroups.height * dispatch.threadsPerThreadgroup.height;
  if (!pipeline.rowsAreIndependent) return pipeline.function(arguments, {width, 0, height});
  crew.forRows(height, width, [&](int firstRow, int endRow) {
    pipeline.function(arguments, {width, firstRow, endRow});
  });
}

void run(const RenderPass& pass, const Recording& recording, Crew& crew) {
  const NativeImage& target = imageOf(*pass.target);
  crew.forRows(target.height, target.width, [&](int firstRow, int endRow) {
    for (int first = firstRow; first < endRow; first += cachedRows) {
      const int end = std::min(first + cachedRows, endRow);
      clear(target, pass.clearColor, first, end);
      for (const Draw& each : recording.drawsOf(pass))
        draw(each, recording, target, first, end);
    }
  });
}

}  // namespace

void execute(const Recording& recording, Crew& crew) {
  for (const Pass& pass : recording.passes)
    std::visit([&](const auto& work) { run(work, recording, crew); }, pass);
}

}  // namespace velicor::gpu
