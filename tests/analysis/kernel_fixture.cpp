#include "analysis/kernel_fixture.h"

#include <cmath>
#include <cstring>
#include <numeric>

namespace velicor::test {

namespace {

int groups(int threads) { return (threads + 15) / 16; }

std::vector<std::uint32_t> numbersIn(gpu::Buffer& buffer) {
  std::vector<std::uint32_t> numbers(buffer.length() / sizeof(std::uint32_t));
  std::memcpy(numbers.data(), buffer.contents().data(), buffer.length());
  return numbers;
}

std::uint64_t sum(std::span<const std::uint32_t> counters) {
  return std::accumulate(counters.begin(), counters.end(), std::uint64_t{0});
}

}  // namespace

PixelBufferRef frameOf(int width, int height, const std::function<Rgb(int x, int y)>& color) {
  auto frame = std::make_shared<PixelBuffer>(width, height);
  for (int y = 0; y < height; ++y) {
    std::byte* pixel = frame->bytes() + frame->bytesPerRow() * static_cast<std::size_t>(y);
    for (int x = 0; x < width; ++x, pixel += 4) {
      const Rgb rgb = color(x, y);
      for (std::size_t i = 0; i < 3; ++i)
        pixel[i] = static_cast<std::byte>(rgb[2 - i]);
    }
  }
  return frame;
}

PixelBufferRef plainFrame(int width, int height, Rgb color) {
  return frameOf(width, height, [color](int, int) { return color; });
}

Pixels readPixels(const std::shared_ptr<gpu::Texture>& texture) {
  const auto& device = texture->device();
  const auto copied = device->makeTexture({texture->pixelFormat(), texture->width(), texture->height(),
                                           gpu::TextureUsage::shaderRead, gpu::StorageMode::shared});
  const auto commands = device->makeCommandQueue()->makeCommandBuffer();
  const auto blit = commands->makeBlitEncoder();
  blit->copy({.source = texture,
              .sourceOrigin = {},
              .size = texture->size(),
              .destination = copied,
              .destinationOrigin = {}});
  blit->endEncoding();
  commands->commit();
  commands->waitUntilCompleted();
  Pixels pixels{texture->width(), texture->height(), {}};
  const auto width = static_cast<std::size_t>(pixels.width);
  pixels.rgba.resize(width * static_cast<std::size_t>(pixels.height));
  copied->getBytes(std::as_writable_bytes(std::span(pixels.rgba)), 4 * width, {{}, texture->size()});
  if (texture->pixelFormat() == gpu::PixelFormat::bgra8Unorm) {
    for (auto& pixel : pixels.rgba)
      std::swap(pixel[0], pixel[2]);
  }
  return pixels;
}

std::uint32_t Scopes::chromaBin(int row, int column) const {
  return vectorscope[static_cast<std::size_t>(row) * kernels::scopeBins + static_cast<std::size_t>(column)];
}

std::uint32_t Scopes::paradeBin(int plane, int level, int column) const {
  return parade[static_cast<std::size_t>(plane) * kernels::planeCounters +
                static_cast<std::size_t>(level) * kernels::scopeBins + static_cast<std::size_t>(column)];
}

std::uint64_t Scopes::paradeSum(int plane) const {
  return sum(std::span(parade).subspan(static_cast<std::size_t>(plane) * kernels::planeCounters,
                                       kernels::planeCounters));
}

std::uint64_t Scopes::vectorscopeSum() const { return sum(vectorscope); }

std::shared_ptr<gpu::Texture> KernelRunner::wrap(const PixelBufferRef& frame) {
  return device_->makeTextureCache()->texture(frame, gpu::PixelFormat::bgra8Unorm, frame->width(),
                                              frame->height());
}

std::shared_ptr<gpu::Texture> KernelRunner::picture(int width, int height) {
  return device_->makeTexture({gpu::PixelFormat::rgba8Unorm, width, height,
                               gpu::TextureUsage::shaderRead | gpu::TextureUsage::shaderWrite,
                               gpu::StorageMode::deviceOnly});
}

const std::shared_ptr<gpu::ComputePipeline>& KernelRunner::pipeline(const std::string& name) {
  auto& pipeline = pipelines_[name];
  if (!pipeline) pipeline = device_->makeComputePipeline(library_->function(name));
  return pipeline;
}

Scopes KernelRunner::scopesOf(const PixelBufferRef& frame, int stride) {
  const auto source = wrap(frame);
  const auto vectorscope = device_->makeBuffer(kernels::vectorscopeBytes, gpu::StorageMode::shared);
  const auto parade = device_->makeBuffer(kernels::paradeBytes, gpu::StorageMode::shared);
  const auto vectorscopeImage = picture(512, 512);
  const auto paradeImage = picture(780, 256);
  const auto commands = queue_->makeCommandBuffer();
  const auto blit = commands->makeBlitEncoder();
  blit->fill({vectorscope, 0, vectorscope->length(), 0});
  blit->fill({parade, 0, parade->length(), 0});
  blit->endEncoding();
  const int columns = (frame->width() + stride - 1) / stride;
  const int rows = (frame->height() + stride - 1) / stride;
  const auto encoder = commands->makeComputeEncoder();
  encoder->setPipeline(pipeline("accumulateScopes"));
  encoder->setTexture(source, 0);
  encoder->setBuffer(vectorscope, 0, 0);
  encoder->setBuffer(parade, 0, 1);
  encoder->setValue(kernels::Rectangle{0, 0, static_cast<std::uint32_t>(frame->width()),
                                       static_cast<std::uint32_t>(frame->height())},
                    2);
  encoder->setValue(static_cast<std::uint32_t>(stride), 3);
  encoder->dispatchThreadgroups({groups(columns), groups(rows), 1}, {16, 16, 1});
  encoder->endEncoding();
  const float samples = static_cast<float>(columns * rows);
  renderScope(*commands, "renderVectorscope", vectorscope,
              1 / std::fmax(std::log2(1 + 0.002F * samples), 4.0F), vectorscopeImage);
  renderScope(*commands, "renderParade", parade, 1 / std::fmax(std::log2(1 + samples / 1024), 3.0F),
              paradeImage);
  commands->commit();
  commands->waitUntilCompleted();
  return {numbersIn(*vectorscope), numbersIn(*parade), readPixels(vectorscopeImage), readPixels(paradeImage)};
}

void KernelRunner::renderScope(gpu::CommandBuffer& commands, const char* kernel,
                               const std::shared_ptr<gpu::Buffer>& counters, float gain,
                               const std::shared_ptr<gpu::Texture>& image) {
  const auto encoder = commands.makeComputeEncoder();
  encoder->setPipeline(pipeline(kernel));
  encoder->setBuffer(counters, 0, 0);
  encoder->setValue(gain, 1);
  encoder->setTexture(image, 0);
  encoder->dispatchThreadgroups({groups(image->width()), groups(image->height()), 1}, {16, 16, 1});
  encoder->endEncoding();
}

Pixels KernelRunner::falseColorOf(const PixelBufferRef& frame, int mode, const Palette::Buffer& palette) {
  const auto source = wrap(frame);
  const auto preview = picture(frame->width(), frame->height());
  const auto commands = queue_->makeCommandBuffer();
  const auto encoder = commands->makeComputeEncoder();
  encoder->setPipeline(pipeline("falseColor"));
  encoder->setTexture(source, 0);
  encoder->setTexture(preview, 1);
  encoder->setValue(static_cast<std::uint32_t>(mode), 0);
  encoder->setValue(kernels::Offset{}, 1);
  encoder->setValue(palette, 2);
  encoder->dispatchThreadgroups({groups(frame->width()), groups(frame->height()), 1}, {16, 16, 1});
  encoder->endEncoding();
  commands->commit();
  return readPixels(preview);
}

const std::shared_ptr<gpu::RenderPipeline>& KernelRunner::blit(const std::string& fragment) {
  auto& pipeline = blits_[fragment];
  if (!pipeline) {
    pipeline = device_->makeRenderPipeline(
        {library_->function("blitVertex"), library_->function(fragment), gpu::PixelFormat::bgra8Unorm});
  }
  return pipeline;
}

Pixels KernelRunner::drawn(const PixelBufferRef& frame, gpu::Extent size, kernels::Scale scale,
                           const char* fragment) {
  const auto target = device_->makeTexture({gpu::PixelFormat::bgra8Unorm, size.width, size.height,
                                            gpu::TextureUsage::renderTarget, gpu::StorageMode::deviceOnly});
  const auto commands = queue_->makeCommandBuffer();
  const auto encoder = commands->makeRenderEncoder({target, {0.02, 0.02, 0.02, 1}});
  encoder->setPipeline(blit(fragment));
  encoder->setVertexBytes(std::as_bytes(std::span<const kernels::Scale, 1>(&scale, 1)), 0);
  encoder->setFragmentTexture(wrap(frame), 0);
  encoder->drawTriangles(0, 3);
  encoder->endEncoding();
  commands->commit();
  return readPixels(target);
}

}  // namespace velicor::test
