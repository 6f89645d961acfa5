#pragma once

#include <memory>
#include <string>

#include "platform/gpu/device.h"
#include "platform/gpu/native/worker.h"

namespace velicor::gpu {

// The main processor as a device: textures are memory, one thread executes the command buffers. It needs no
// driver and is never lost. Functions run in their native form.
class NativeDevice : public Device {
 public:
  NativeDevice() = default;
  std::string name() const override { return "CPU"; }

 protected:
  std::shared_ptr<Buffer> onMakeBuffer(std::size_t length, StorageMode storageMode) override;
  std::shared_ptr<Texture> onMakeTexture(const TextureDescriptor& descriptor) override;
  std::shared_ptr<ComputePipeline> onMakeComputePipeline(const Function& function) override;
  std::shared_ptr<RenderPipeline> onMakeRenderPipeline(const RenderPipelineDescriptor& descriptor) override;
  std::shared_ptr<TextureCache> onMakeTextureCache() override;
  std::shared_ptr<DrawableTarget> onMakeDrawableTarget(int width, int height) override;
  void onSubmit(Submission submission) override;

 private:
  Worker worker_;
};

// nullptr, with a log line, where no thread can be had.
std::shared_ptr<Device> makeNativeDevice();

}  // namespace velicor::gpu
