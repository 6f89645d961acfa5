#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/gpu/command_buffer.h"
#include "platform/gpu/drawables.h"
#include "platform/gpu/encoders.h"
#include "platform/gpu/kernel_bundle.h"
#include "platform/gpu/library.h"
#include "platform/gpu/passes.h"
#include "platform/gpu/resources.h"
#include "platform/gpu/texture_cache.h"
#include "platform/gpu/types.h"

// Compute and drawing on a graphics processor, or on the main one where there is none.
namespace velicor::gpu {

// A processor that executes command buffers. Everything made by a device keeps it alive.
//
// The public functions check their arguments once for all devices: a mistake of the program (a size of zero,
// a resource of another device) ends the process with a log line; what can fail at run time gives nullptr.
// The devices below trust what they get. Any thread.
class Device : public std::enable_shared_from_this<Device> {
 public:
  virtual ~Device() = default;
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  // For the log and the about texts, such as "CPU".
  virtual std::string name() const = 0;

  // How often the device has been lost. What only it held before the last time has no contents any more.
  virtual std::uint64_t lossCount() const { return 0; }

  // Calls the handler, on a device thread, whenever the device works again after a loss; until what this
  // returns is let go of.
  using Watch = std::shared_ptr<const std::function<void()>>;
  [[nodiscard]] Watch watchReturns(std::function<void()> handler);

  std::shared_ptr<CommandQueue> makeCommandQueue();

  // nullptr also above maxBufferLength. Contents are undefined until a command or the caller writes them.
  std::shared_ptr<Buffer> makeBuffer(std::size_t length, StorageMode storageMode);

  // nullptr also where a side is larger than maxTextureSide. Contents as above.
  std::shared_ptr<Texture> makeTexture(const TextureDescriptor& descriptor);

  std::shared_ptr<Library> makeLibrary(KernelBundle bundle);

  // nullptr where the function is of another kind or lacks this device's form.
  std::shared_ptr<ComputePipeline> makeComputePipeline(const std::shared_ptr<const Function>& function);
  std::shared_ptr<RenderPipeline> makeRenderPipeline(const RenderPipelineDescriptor& descriptor);

  std::shared_ptr<TextureCache> makeTextureCache();

  // The targets of one view.
  std::shared_ptr<Drawables> makeDrawables();

 protected:
  friend class CommandBuffer;
  friend class CommandQueue;
  friend class Drawables;

  // What a device can be asked to get ready.
  enum class Work { commandQueue, commandBuffer, blitEncoder, computeEncoder, renderEncoder };

  Device() = default;

  // Whether this can be had now. A device that was lost refuses.
  virtual bool accepts(Work) { return true; }
  virtual std::shared_ptr<Buffer> onMakeBuffer(std::size_t length, StorageMode storageMode) = 0;
  virtual std::shared_ptr<Texture> onMakeTexture(const TextureDescriptor& descriptor) = 0;
  virtual std::shared_ptr<ComputePipeline> onMakeComputePipeline(const Function& function) = 0;
  virtual std::shared_ptr<RenderPipeline> onMakeRenderPipeline(
      const RenderPipelineDescriptor& descriptor) = 0;
  virtual std::shared_ptr<TextureCache> onMakeTextureCache() = 0;
  virtual std::shared_ptr<DrawableTarget> onMakeDrawableTarget(int width, int height) = 0;

  // Takes the work in; never waits for it. The order of these calls is the order of execution.
  virtual void onSubmit(Submission submission) = 0;

  void announceReturn();

 private:
  std::mutex watchesMutex_;
  std::vector<std::weak_ptr<const std::function<void()>>> watches_;
};

// Begins to look for what systemDefaultDevice() chooses from, in a process of its own. To be called at the
// start, while this process has a single thread: a copy of one with several can get stuck. Does not wait.
void findGraphicsProcessors();

// The device that serves this machine best; the same one at every call. nullptr where none can be had.
std::shared_ptr<Device> systemDefaultDevice();

}  // namespace velicor::gpu
