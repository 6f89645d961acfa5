#include "platform/gpu/vulkan/flight.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <utility>

namespace velicor::gpu::vulkan {

namespace {

constexpr std::size_t argumentBufferSize = std::size_t{1} << 16;
constexpr std::size_t argumentAlignment = bufferBindingAlignment;
constexpr std::uint32_t setsPerPool = 16;
constexpr std::uint32_t maxTimestamps = 64;  // the passes beyond are not measured

vk::raii::CommandBuffer makeCommands(const vk::raii::Device& device, const vk::raii::CommandPool& pool) {
  return std::move(vk::raii::CommandBuffers(device, {*pool, vk::CommandBufferLevel::ePrimary, 1}).front());
}

vk::raii::DescriptorPool makeSetPool(const DeviceContext& context) {
  using Type = vk::DescriptorType;
  constexpr std::uint32_t textures = setsPerPool * maxTextureBindings;
  constexpr std::uint32_t buffers = setsPerPool * maxBufferBindings * 2;
  constexpr std::array sizes{vk::DescriptorPoolSize(Type::eCombinedImageSampler, textures),
                             vk::DescriptorPoolSize(Type::eStorageImage, textures),
                             vk::DescriptorPoolSize(Type::eStorageBuffer, buffers)};
  vk::raii::DescriptorPool pool(
      context.device(),
      vk::DescriptorPoolCreateInfo(vk::DescriptorPoolCreateFlagBits::eFreeDescriptorSet, setsPerPool, sizes));
  context.setName(*pool, "arguments");
  return pool;
}

}  // namespace

Flight::Flight(ContextRef context, bool measures)
    : context_(std::move(context)),
      commandPool_(context_->device(), {vk::CommandPoolCreateFlagBits::eTransient, context_->queueFamily()}),
      commands_(makeCommands(context_->device(), commandPool_)),
      done_(context_->device(), vk::FenceCreateInfo()),
      measures_(measures && context_->nanosecondsPerTick() > 0) {
  context_->setName(*commandPool_, "flight");
  context_->setName(*commands_, "flight");
  context_->setName(*done_, "flight");
  if (!measures_) return;
  clock_ = {context_->device(), vk::QueryPoolCreateInfo({}, vk::QueryType::eTimestamp, maxTimestamps)};
  context_->setName(*clock_, "pass clock");
}

void Flight::restart() {
  commandPool_.reset({});
  context_->device().resetFences(*done_);
  argumentBuffer_ = 0;
  argumentBytes_ = 0;
  for (ArgumentSet& set : sets_)
    set.used = false;
  timestamps_ = 0;
  passes_.clear();
  commands_.begin({vk::CommandBufferUsageFlagBits::eOneTimeSubmit});
  if (!measures_) return;
  commands_.resetQueryPool(*clock_, 0, maxTimestamps);
  writeTimestamp();
}

vk::DescriptorBufferInfo Flight::put(std::span<const std::byte> bytes) {
  if (argumentBuffer_ < arguments_.size() && argumentBytes_ + bytes.size() > argumentBufferSize) {
    ++argumentBuffer_;
    argumentBytes_ = 0;
  }
  if (argumentBuffer_ == arguments_.size()) {
    arguments_.push_back(
        std::make_unique<BufferBacking>(context_, argumentBufferSize, MemoryKind::upload, "argument bytes"));
  }
  const BufferBacking& buffer = *arguments_[argumentBuffer_];
  std::memcpy(buffer.bytes() + argumentBytes_, bytes.data(), bytes.size());
  const vk::DescriptorBufferInfo place(*buffer.buffer, argumentBytes_, bytes.size());
  argumentBytes_ += (bytes.size() + argumentAlignment - 1) / argumentAlignment * argumentAlignment;
  return place;
}

vk::DescriptorSet Flight::nextSet(std::uint32_t bindings) {
  ArgumentSet* next = unusedSet(bindings);
  if (!next) next = unusedSet(0);
  if (!next) {
    addSets();
    next = unusedSet(0);
  }
  next->bindings = bindings;
  next->used = true;
  return *next->set;
}

Flight::ArgumentSet* Flight::unusedSet(std::uint32_t bindings) {
  const auto found = std::find_if(sets_.begin(), sets_.end(), [bindings](const ArgumentSet& set) {
    return !set.used && set.bindings == bindings;
  });
  return found == sets_.end() ? nullptr : &*found;
}

void Flight::addSets() {
  setPools_.push_back(makeSetPool(*context_));
  const std::vector layouts(setsPerPool, context_->setLayout());
  vk::raii::DescriptorSets made(context_->device(), {*setPools_.back(), layouts});
  for (vk::raii::DescriptorSet& set : made) {
    context_->setName(*set, "arguments");
    sets_.push_back({std::move(set)});
  }
}

void Flight::writeTimestamp() {
  commands_.writeTimestamp(vk::PipelineStageFlagBits::eBottomOfPipe, *clock_, timestamps_++);
}

void Flight::endPass(std::string_view name) {
  if (!measures_ || timestamps_ == maxTimestamps) return;
  writeTimestamp();
  passes_.emplace_back(name);
}

void Flight::submit() {
  commands_.end();
  context_->queue().submit(vk::SubmitInfo({}, {}, *commands_), *done_);
}

void Flight::await() const {
  constexpr auto forever = std::numeric_limits<std::uint64_t>::max();
  static_cast<void>(context_->device().waitForFences(*done_, VK_TRUE, forever));
}

std::vector<PassTime> Flight::passTimes() const {
  std::vector<PassTime> times;
  if (passes_.empty()) return times;
  // A pair or a structure, depending on the headers.
  const auto [result, ticks] =
      clock_.getResults<std::uint64_t>(0, timestamps_, timestamps_ * sizeof(std::uint64_t),
                                       sizeof(std::uint64_t), vk::QueryResultFlagBits::e64);
  for (std::size_t i = 0; i < passes_.size(); ++i) {
    const auto nanoseconds = static_cast<double>(ticks[i + 1] - ticks[i]) * context_->nanosecondsPerTick();
    times.push_back({passes_[i], nanoseconds / 1000});
  }
  return times;
}

}  // namespace velicor::gpu::vulkan
