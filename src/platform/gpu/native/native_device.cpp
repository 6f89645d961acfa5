#include "platform/gpu/native/native_device.h"

#include <system_error>
#include <utility>

#include "platform/gpu/native/native_pipelines.h"
#include "platform/gpu/native/native_resources.h"

namespace velicor::gpu {

std::shared_ptr<Buffer> NativeDevice::onMakeBuffer(std::size_t length, StorageMode storageMode) {
  PageMemory memory = allocatePages(length);
  if (!memory) return nullptr;
  return std::make_shared<NativeBuffer>(shared_from_this(), std::move(memory), length, storageMode);
}

std::shared_ptr<Texture> NativeDevice::onMakeTexture(const TextureDescriptor& descriptor) {
  return makeNativeTexture(shared_from_this(), descriptor);
}

std::shared_ptr<ComputePipeline> NativeDevice::onMakeComputePipeline(const Function& function) {
  if (const auto* native = std::get_if<NativeComputeFunction>(&function.forms.native))
    return std::make_shared<NativeComputePipeline>(shared_from_this(), *native, false);
  if (const auto* rows = std::get_if<NativeRowsFunction>(&function.forms.native))
    return std::make_shared<NativeComputePipeline>(shared_from_this(), rows->function, true);
  return nullptr;
}

std::shared_ptr<RenderPipeline> NativeDevice::onMakeRenderPipeline(
    const RenderPipelineDescriptor& descriptor) {
  const auto* vertex = std::get_if<NativeVertexFunction>(&descriptor.vertexFunction->forms.native);
  const auto* fragment = std::get_if<NativeFragmentFunction>(&descriptor.fragmentFunction->forms.native);
  if (!vertex || !fragment) return nullptr;
  return std::make_shared<NativeRenderPipeline>(shared_from_this(), descriptor.colorFormat, *vertex,
                                                *fragment);
}

std::shared_ptr<TextureCache> NativeDevice::onMakeTextureCache() {
  return std::make_shared<NativeTextureCache>(shared_from_this());
}

std::shared_ptr<DrawableTarget> NativeDevice::onMakeDrawableTarget(int width, int height) {
  const TextureDescriptor descriptor{PixelFormat::bgra8Unorm, width, height, TextureUsage::renderTarget,
                                     StorageMode::deviceOnly};
  auto texture = makeNativeTexture(shared_from_this(), descriptor);
  return texture ? std::make_shared<NativeDrawableTarget>(std::move(texture)) : nullptr;
}

void NativeDevice::onSubmit(Submission submission) { worker_.submit(std::move(submission)); }

std::shared_ptr<Device> makeNativeDevice() {
  try {
    return std::make_shared<NativeDevice>();
  } catch (const std::system_error&) {
    return nullptr;  // no thread to be had
  }
}

}  // namespace velicor::gpu
