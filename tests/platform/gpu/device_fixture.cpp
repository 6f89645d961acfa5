#include "platform/gpu/device_fixture.h"

#include <cmath>

#include "gpu_test_shaders.h"

namespace velicor::gpu::test {

namespace {

void addOne(const NativeArguments& arguments, GridRange) { ++arguments.array<std::uint32_t>(0, 1)[0]; }

void twice(const NativeArguments& arguments, GridRange) { arguments.array<std::uint32_t>(0, 1)[0] *= 2; }

NativeVertex plainVertex(const NativeArguments& arguments, int index) {
  return arguments.array<const NativeVertex>(0, 3)[static_cast<std::size_t>(index)];
}

void showCoordinates(const NativeArguments&, const FragmentSpan& span) {
  const std::size_t red = span.target.format == PixelFormat::bgra8Unorm ? 2 : 0;
  for (int x = span.xBegin; x < span.xEnd; ++x) {
    std::byte* pixel = span.target.pixel(x, span.y);
    pixel[red] = static_cast<std::byte>(std::lround(255 * (span.u + span.du * (x - span.xBegin))));
    pixel[1] = static_cast<std::byte>(std::lround(255 * (span.v + span.dv * (x - span.xBegin))));
    pixel[2 - red] = std::byte{0};
    pixel[3] = std::byte{255};
  }
}

}  // namespace

KernelBundle testKernels() {
  return {{"addOne", {.native = addOne, .spirv = shaders::addOne}},
          {"twice", {.native = twice, .spirv = shaders::twice}},
          {"plainVertex", {.native = plainVertex, .spirv = shaders::plainVertex}},
          {"showCoordinates", {.native = showCoordinates, .spirv = shaders::showCoordinates}},
          {"addColor", {.native = {}, .spirv = shaders::addColor}},
          {"nowhere", {}}};
}

std::shared_ptr<CommandBuffer> Workbench::numberWork(CommandQueue& queue, const char* kernel,
                                                     const std::shared_ptr<Buffer>& number) {
  auto commands = queue.makeCommandBuffer();
  const auto encoder = commands->makeComputeEncoder();
  encoder->setPipeline(pipeline(kernel));
  encoder->setBuffer(number, 0, 0);
  encoder->dispatchThreadgroups({}, {});
  encoder->endEncoding();
  return commands;
}

std::vector<std::uint8_t> Workbench::pixelsOf(const std::shared_ptr<Texture>& source) {
  const auto copied = texture(source->width(), source->height(), StorageMode::shared, source->pixelFormat());
  const auto commands = queue_->makeCommandBuffer();
  const auto blit = commands->makeBlitEncoder();
  blit->copy({.source = source,
              .sourceOrigin = {},
              .size = source->size(),
              .destination = copied,
              .destinationOrigin = {}});
  blit->endEncoding();
  commands->commit();
  commands->waitUntilCompleted();
  const std::size_t bytesPerRow = bytesPerPixel * static_cast<std::size_t>(source->width());
  std::vector<std::uint8_t> pixels(bytesPerRow * static_cast<std::size_t>(source->height()));
  copied->getBytes(std::as_writable_bytes(std::span(pixels)), bytesPerRow, {{}, source->size()});
  return pixels;
}

}  // namespace velicor::gpu::test
