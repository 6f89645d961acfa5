// The counters behind the scope images, as numbers.
#include "analysis/kernels/kernel_interface.h"
#include "analysis/metal_processor.h"
#include "platform/dispatch/main_queue.h"

namespace velicor {

namespace {

using Handler = std::function<void(std::optional<ScopeReading>)>;

std::span<const std::uint32_t> countersIn(gpu::Buffer& buffer) {
  const std::span<std::byte> bytes = buffer.contents();
  return {reinterpret_cast<const std::uint32_t*>(bytes.data()), bytes.size() / sizeof(std::uint32_t)};
}

void answer(const Handler& handler, std::optional<ScopeReading> reading) {
  dispatch::MainQueue::shared().async([handler, reading] { handler(reading); });
}

}  // namespace

void MetalProcessor::readScopes(const Handler& handler) {
  const auto vectorscope = device_->makeBuffer(kernels::vectorscopeBytes, gpu::StorageMode::shared);
  const auto parade = device_->makeBuffer(kernels::paradeBytes, gpu::StorageMode::shared);
  // Made before the images are asked for: where these are lost meanwhile, it fails.
  const auto commands = queue_->makeCommandBuffer();
  const auto blit = commands && this->vectorscope() ? commands->makeBlitEncoder() : nullptr;
  if (!vectorscope || !parade || !blit) return answer(handler, std::nullopt);
  blit->copy({.source = vsBuffer_, .destination = vectorscope, .length = kernels::vectorscopeBytes});
  blit->copy({.source = paradeBuffer_, .destination = parade, .length = kernels::paradeBytes});
  blit->endEncoding();
  commands->addCompletedHandler([handler, vectorscope, parade](const gpu::CommandBuffer& done) {
    const bool failed = done.status() == gpu::CommandBuffer::Status::failed;
    answer(handler, failed ? std::nullopt : readCounters(countersIn(*vectorscope), countersIn(*parade)));
  });
  commands->commit();
}

}  // namespace velicor
