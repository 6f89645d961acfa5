#include "platform/gpu/vulkan/vulkan_device.h"

#include <system_error>
#include <utility>

#include "platform/gpu/vulkan/frames.h"
#include "platform/gpu/vulkan/timeline.h"
#include "platform/gpu/vulkan/vulkan_pipelines.h"
#include "platform/gpu/vulkan/vulkan_resources.h"

namespace velicor::gpu {

namespace {

using vulkan::ContextRef;
using Stage = vulkan::ShaderFacts::Stage;

class VulkanDevice : public Device {
 public:
  VulkanDevice(std::unique_ptr<vulkan::Engine> engine, std::string name)
      : name_(std::move(name)), timeline_(std::move(engine), [this] { announceReturn(); }) {}
  std::string name() const override {
    const ContextRef context = timeline_.context();
    return context ? context->name() : name_;
  }
  std::uint64_t lossCount() const override { return timeline_.lossCount(); }

 protected:
  bool accepts(Work work) override { return work == Work::commandQueue || timeline_.context() != nullptr; }
  std::shared_ptr<Buffer> onMakeBuffer(std::size_t length, StorageMode storageMode) override;
  std::shared_ptr<Texture> onMakeTexture(const TextureDescriptor& descriptor) override;
  std::shared_ptr<ComputePipeline> onMakeComputePipeline(const Function& function) override;
  std::shared_ptr<RenderPipeline> onMakeRenderPipeline(const RenderPipelineDescriptor& descriptor) override;
  std::shared_ptr<TextureCache> onMakeTextureCache() override;
  std::shared_ptr<DrawableTarget> onMakeDrawableTarget(int width, int height) override;
  void onSubmit(Submission submission) override { timeline_.submit(std::move(submission)); }

 private:
  // What can't be had now is nothing.
  template <typename Resource, typename... Arguments>
  std::shared_ptr<Resource> make(Arguments&&... arguments) {
    const ContextRef context = timeline_.context();
    if (!context) return nullptr;
    try {
      return std::make_shared<Resource>(shared_from_this(), context, std::forward<Arguments>(arguments)...);
    } catch (const vk::SystemError&) {
      return nullptr;
    }
  }

  const std::string name_;  // the first one's
  vulkan::Timeline timeline_;
};

// None where the function lacks the form, or is of another kind.
std::optional<vulkan::ShaderFacts> factsOf(const Function& function, Stage stage) {
  auto facts = vulkan::factsOf(function.forms.spirv);
  return facts && facts->stage == stage ? facts : std::nullopt;
}

std::shared_ptr<Buffer> VulkanDevice::onMakeBuffer(std::size_t length, StorageMode storageMode) {
  return make<vulkan::VulkanBuffer>(length, storageMode);
}

std::shared_ptr<Texture> VulkanDevice::onMakeTexture(const TextureDescriptor& descriptor) {
  return make<vulkan::VulkanTexture>(descriptor, descriptor.storageMode == StorageMode::shared);
}

std::shared_ptr<ComputePipeline> VulkanDevice::onMakeComputePipeline(const Function& function) {
  auto facts = factsOf(function, Stage::compute);
  return facts ? make<vulkan::VulkanComputePipeline>(function, *std::move(facts)) : nullptr;
}

std::shared_ptr<RenderPipeline> VulkanDevice::onMakeRenderPipeline(
    const RenderPipelineDescriptor& descriptor) {
  auto vertex = factsOf(*descriptor.vertexFunction, Stage::vertex);
  auto fragment = factsOf(*descriptor.fragmentFunction, Stage::fragment);
  if (!vertex || !fragment) return nullptr;
  return make<vulkan::VulkanRenderPipeline>(descriptor, *std::move(vertex), *std::move(fragment));
}

std::shared_ptr<TextureCache> VulkanDevice::onMakeTextureCache() {
  return std::make_shared<vulkan::VulkanTextureCache>(shared_from_this(), timeline_);
}

std::shared_ptr<DrawableTarget> VulkanDevice::onMakeDrawableTarget(int width, int height) {
  const TextureDescriptor descriptor{PixelFormat::bgra8Unorm, width, height, TextureUsage::renderTarget,
                                     StorageMode::deviceOnly};
  auto texture = make<vulkan::VulkanTexture>(descriptor, true);
  return texture ? std::make_shared<vulkan::VulkanDrawableTarget>(std::move(texture)) : nullptr;
}

}  // namespace

std::shared_ptr<Device> makeVulkanDevice(VulkanOptions options) {
  auto engine = vulkan::Engine::make(std::move(options));
  if (!engine) return nullptr;
  std::string name = engine->context()->name();
  try {
    return std::make_shared<VulkanDevice>(std::move(engine), std::move(name));
  } catch (const std::system_error&) {
    return nullptr;  // no thread to be had
  }
}

}  // namespace velicor::gpu
