#include "platform/gpu/command_buffer.h"

#include <utility>

#include "platform/base/recycling.h"
#include "platform/gpu/device.h"
#include "platform/gpu/misuse.h"

namespace velicor::gpu {

CommandBuffer::CommandBuffer(std::shared_ptr<Device> device)
    : device_(std::move(device)), lossCount_(device_->lossCount()) {}

std::shared_ptr<BlitEncoder> CommandBuffer::makeBlitEncoder() {
  requireRecording();
  if (!device_->accepts(Device::Work::blitEncoder)) return nullptr;
  return makeRecycled<BlitEncoder>(shared_from_this());
}

std::shared_ptr<ComputeEncoder> CommandBuffer::makeComputeEncoder() {
  requireRecording();
  if (!device_->accepts(Device::Work::computeEncoder)) return nullptr;
  return makeRecycled<ComputeEncoder>(shared_from_this());
}

std::shared_ptr<RenderEncoder> CommandBuffer::makeRenderEncoder(RenderTarget target) {
  requireRecording();
  require(target.texture && target.texture->device() == device_, "a render target of no or another device");
  require(allows(target.texture->usage(), TextureUsage::renderTarget), "a texture that is no render target");
  if (!device_->accepts(Device::Work::renderEncoder)) return nullptr;
  return makeRecycled<RenderEncoder>(shared_from_this(), std::move(target));
}

void CommandBuffer::present(std::shared_ptr<Drawable> drawable) {
  requireRecording();
  require(drawable && drawable->texture()->device() == device_, "a drawable of no or another device");
  recording_->presented.push_back(std::move(drawable));
}

void CommandBuffer::addCompletedHandler(CompletedHandler handler) {
  requireRecording();
  recording_->handlers.push_back(std::move(handler));
}

void CommandBuffer::commit() {
  requireRecording();
  {
    const std::scoped_lock guard(mutex_);
    status_ = Status::committed;
  }
  device_->onSubmit({std::move(recording_), shared_from_this()});
}

void CommandBuffer::finish(Recording& recording, bool succeeded) {
  {
    const std::scoped_lock guard(mutex_);
    status_ = succeeded ? Status::completed : Status::failed;
  }
  for (const auto& drawable : recording.presented) {
    if (succeeded) drawable->publish();
  }
  recording.presented.clear();
  for (const CompletedHandler& handler : recording.handlers)
    handler(*this);
  recording.handlers.clear();
  const std::scoped_lock guard(mutex_);
  handlersDone_ = true;
  changed_.notify_all();
}

void CommandBuffer::waitUntilCompleted() const {
  std::unique_lock guard(mutex_);
  require(status_ != Status::recording, "waiting for a command buffer that was never committed");
  changed_.wait(guard, [this] { return handlersDone_; });
}

CommandBuffer::Status CommandBuffer::status() const {
  const std::scoped_lock guard(mutex_);
  return status_;
}

void CommandBuffer::openEncoder() {
  requireRecording();
  encoderOpen_ = true;
}

void CommandBuffer::closeEncoder() { encoderOpen_ = false; }

void CommandBuffer::requireRecording() const {
  require(status() == Status::recording, "a command buffer is changed after its commit");
  require(!encoderOpen_, "a command buffer is used while one of its encoders is open");
}

std::shared_ptr<CommandBuffer> CommandQueue::makeCommandBuffer() {
  return device_->accepts(Device::Work::commandBuffer) ? makeRecycled<CommandBuffer>(device_) : nullptr;
}

}  // namespace velicor::gpu
