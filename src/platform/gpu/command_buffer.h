#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

#include "platform/gpu/drawables.h"
#include "platform/gpu/encoders.h"
#include "platform/gpu/passes.h"

namespace velicor::gpu {

// A list of work that is recorded, committed once and then executed as a whole. All command buffers of a
// device, whatever queue they come from, execute one after the other in the order of their commits, and each
// sees what the ones before it wrote.
//
// Recorded by one thread at a time. Dropping one that was never committed forgets its work and its handlers;
// a committed one lives until it has completed.
class CommandBuffer : public std::enable_shared_from_this<CommandBuffer> {
 public:
  // failed: the device was lost on the way; what the work would have written is undefined.
  enum class Status { recording, committed, completed, failed };

  explicit CommandBuffer(std::shared_ptr<Device> device);
  CommandBuffer(const CommandBuffer&) = delete;
  CommandBuffer& operator=(const CommandBuffer&) = delete;

  // nullptr where the device can't take more work now.
  std::shared_ptr<BlitEncoder> makeBlitEncoder();
  std::shared_ptr<ComputeEncoder> makeComputeEncoder();
  std::shared_ptr<RenderEncoder> makeRenderEncoder(RenderTarget target);

  // When the work has completed, the drawable's picture becomes the newest of its view, before the handlers
  // run.
  void present(std::shared_ptr<Drawable> drawable);

  // Handlers run after the work, in the order they were added, on a device thread; they may commit work but
  // must not wait for any.
  void addCompletedHandler(CompletedHandler handler);

  void commit();

  // Any thread but a device's. Returns when the work is done and the handlers have returned.
  void waitUntilCompleted() const;

  Status status() const;
  const std::shared_ptr<Device>& device() const { return device_; }

  // The device's when this one was made. Where the device is lost after that, the work fails: what it was
  // going to read is gone.
  std::uint64_t lossCount() const { return lossCount_; }

 private:
  friend class Encoder;
  friend struct Submission;
  void openEncoder();
  void closeEncoder();
  void requireRecording() const;
  void finish(Recording& recording, bool succeeded);

  std::shared_ptr<Device> device_;
  const std::uint64_t lossCount_;
  Stock<Recording>::Loan recording_ = Stock<Recording>::take();  // none once committed
  bool encoderOpen_ = false;

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  Status status_ = Status::recording;
  bool handlersDone_ = false;
};

// Where command buffers come from. Any thread.
class CommandQueue {
 public:
  explicit CommandQueue(std::shared_ptr<Device> device) : device_(std::move(device)) {}

  // nullptr where the device can't take more work now.
  std::shared_ptr<CommandBuffer> makeCommandBuffer();

  const std::shared_ptr<Device>& device() const { return device_; }

 private:
  std::shared_ptr<Device> device_;
};

}  // namespace velicor::gpu
