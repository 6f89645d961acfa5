#include "platform/gpu/device.h"

#include <utility>

#include "platform/gpu/misuse.h"

namespace velicor::gpu {

Device::Watch Device::watchReturns(std::function<void()> handler) {
  auto watch = std::make_shared<const std::function<void()>>(std::move(handler));
  const std::scoped_lock guard(watchesMutex_);
  std::erase_if(watches_, [](const auto& each) { return each.expired(); });
  watches_.push_back(watch);
  return watch;
}

void Device::announceReturn() {
  std::vector<std::weak_ptr<const std::function<void()>>> watches;
  {
    const std::scoped_lock guard(watchesMutex_);
    watches = watches_;
  }
  for (const auto& each : watches) {
    if (const Watch watch = each.lock()) (*watch)();
  }
}

std::shared_ptr<CommandQueue> Device::makeCommandQueue() {
  return accepts(Work::commandQueue) ? std::make_shared<CommandQueue>(shared_from_this()) : nullptr;
}

std::shared_ptr<Buffer> Device::makeBuffer(std::size_t length, StorageMode storageMode) {
  require(length > 0, "a buffer without bytes");
  return length <= maxBufferLength ? onMakeBuffer(length, storageMode) : nullptr;
}

std::shared_ptr<Texture> Device::makeTexture(const TextureDescriptor& descriptor) {
  require(descriptor.width > 0 && descriptor.height > 0, "a texture without pixels");
  if (descriptor.width > maxTextureSide || descriptor.height > maxTextureSide) return nullptr;
  return onMakeTexture(descriptor);
}

std::shared_ptr<Library> Device::makeLibrary(KernelBundle bundle) {
  return std::make_shared<Library>(shared_from_this(), std::move(bundle));
}

std::shared_ptr<ComputePipeline> Device::makeComputePipeline(
    const std::shared_ptr<const Function>& function) {
  require(function && function->device.get() == this, "a pipeline from no function, or another device's");
  return onMakeComputePipeline(*function);
}

std::shared_ptr<RenderPipeline> Device::makeRenderPipeline(const RenderPipelineDescriptor& descriptor) {
  const auto& [vertex, fragment, format] = descriptor;
  require(vertex && vertex->device.get() == this, "a pipeline from no vertex function, or another device's");
  require(fragment && fragment->device.get() == this,
          "a pipeline from no fragment function, or another device's");
  return onMakeRenderPipeline(descriptor);
}

std::shared_ptr<TextureCache> Device::makeTextureCache() { return onMakeTextureCache(); }

std::shared_ptr<Drawables> Device::makeDrawables() { return std::make_shared<Drawables>(shared_from_this()); }

}  // namespace velicor::gpu
