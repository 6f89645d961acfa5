#include "platform/gpu/passes.h"

#include <cstring>

#include "platform/gpu/command_buffer.h"

namespace velicor::gpu {

// Room for an analysis with its handlers.
Recording::Recording() {
  passes.reserve(8);
  draws.reserve(1);
  presented.reserve(1);
  handlers.reserve(4);
  bytes_.reserve(1024);
}

InlineBytes Recording::keep(std::span<const std::byte> bytes) {
  constexpr std::size_t alignment = alignof(std::max_align_t);  // functions read them as what they are
  const InlineBytes kept{(bytes_.size() + alignment - 1) / alignment * alignment, bytes.size()};
  bytes_.resize(kept.offset + kept.length);
  std::memcpy(&bytes_[kept.offset], bytes.data(), bytes.size());
  return kept;
}

std::span<const std::byte> Recording::bytesOf(const InlineBytes& kept) const {
  return std::span(bytes_).subspan(kept.offset, kept.length);
}

std::span<const Draw> Recording::drawsOf(const RenderPass& pass) const {
  return std::span(draws).subspan(pass.firstDraw, pass.drawCount);
}

void Recording::clearPasses() {
  passes.clear();
  draws.clear();
  bytes_.clear();
}

void Recording::clear() {
  clearPasses();
  presented.clear();
  handlers.clear();
}

void Submission::finish(bool succeeded) const {
  recording->clearPasses();
  commandBuffer->finish(*recording, succeeded);
}

}  // namespace velicor::gpu
