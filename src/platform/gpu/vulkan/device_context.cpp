#include "platform/gpu/vulkan/device_context.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>

#include "platform/gpu/vulkan/shader_interface.h"
#include "platform/gpu/vulkan/trials.h"
#include "platform/log/log.h"

namespace velicor::gpu::vulkan {

namespace {

// 0 where the extension is missing.
vk::DeviceSize importAlignmentOf(const vk::raii::PhysicalDevice& physical) {
  const auto extensions = physical.enumerateDeviceExtensionProperties();
  const bool offered = std::any_of(extensions.begin(), extensions.end(), [](const auto& extension) {
    return std::strcmp(extension.extensionName, VK_EXT_EXTERNAL_MEMORY_HOST_EXTENSION_NAME) == 0;
  });
  if (!offered) return 0;
  const auto chain =
      physical
          .getProperties2<vk::PhysicalDeviceProperties2, vk::PhysicalDeviceExternalMemoryHostPropertiesEXT>();
  return chain.get<vk::PhysicalDeviceExternalMemoryHostPropertiesEXT>().minImportedHostPointerAlignment;
}

double nanosecondsPerTick(const vk::raii::PhysicalDevice& physical, std::uint32_t queueFamily) {
  if (physical.getQueueFamilyProperties()[queueFamily].timestampValidBits == 0) return 0;
  return double{physical.getProperties().limits.timestampPeriod};
}

vk::raii::Device openDevice(const vk::raii::PhysicalDevice& physical, std::uint32_t queueFamily,
                            bool imports) {
  constexpr float priority = 1;
  const vk::DeviceQueueCreateInfo queue({}, queueFamily, 1, &priority);
  std::vector<const char*> extensions;
  if (imports) extensions.push_back(VK_EXT_EXTERNAL_MEMORY_HOST_EXTENSION_NAME);
  return {physical, vk::DeviceCreateInfo({}, queue, {}, extensions)};
}

vk::raii::Sampler makeSampler(const vk::raii::Device& device) {
  constexpr auto edge = vk::SamplerAddressMode::eClampToEdge;
  return {device, vk::SamplerCreateInfo({}, vk::Filter::eNearest, vk::Filter::eNearest,
                                        vk::SamplerMipmapMode::eNearest, edge, edge, edge)};
}

vk::raii::DescriptorSetLayout makeSetLayout(const vk::raii::Device& device, const vk::Sampler& sampler) {
  using Stage = vk::ShaderStageFlagBits;
  using Type = vk::DescriptorType;
  std::vector<vk::DescriptorSetLayoutBinding> bindings;
  for (std::uint32_t i = 0; i < maxTextureBindings; ++i) {
    bindings.emplace_back(shader_interface::sampledTextures + i, Type::eCombinedImageSampler, 1,
                          Stage::eCompute | Stage::eFragment, &sampler);
    bindings.emplace_back(shader_interface::storedTextures + i, Type::eStorageImage, 1, Stage::eCompute);
  }
  for (std::uint32_t i = 0; i < maxBufferBindings; ++i) {
    bindings.emplace_back(shader_interface::buffers + i, Type::eStorageBuffer, 1,
                          Stage::eCompute | Stage::eFragment);
    bindings.emplace_back(shader_interface::vertexBytes + i, Type::eStorageBuffer, 1, Stage::eVertex);
  }
  return {device, vk::DescriptorSetLayoutCreateInfo({}, bindings)};
}

vk::raii::PipelineLayout makePipelineLayout(const vk::raii::Device& device,
                                            const vk::DescriptorSetLayout& setLayout) {
  return {device, vk::PipelineLayoutCreateInfo({}, setLayout)};
}

vk::raii::RenderPass makeRenderPass(const vk::raii::Device& device, PixelFormat format) {
  constexpr auto drawing = vk::ImageLayout::eColorAttachmentOptimal;
  const vk::AttachmentDescription target({}, formatOf(format), vk::SampleCountFlagBits::e1,
                                         vk::AttachmentLoadOp::eClear, vk::AttachmentStoreOp::eStore,
                                         vk::AttachmentLoadOp::eDontCare, vk::AttachmentStoreOp::eDontCare,
                                         drawing, drawing);
  const vk::AttachmentReference reference(0, drawing);
  const vk::SubpassDescription subpass({}, vk::PipelineBindPoint::eGraphics, {}, reference);
  return {device, vk::RenderPassCreateInfo({}, target, subpass)};
}

class ImportLosesDevice : public std::exception {};

bool importsAndSurvives(const ContextRef& context) {
  try {
    return canImport(context);
  } catch (const vk::DeviceLostError&) {
    log::Logger("gpu").error(context->name() +
                             " was lost reading main memory: frames are copied from now on");
    throw ImportLosesDevice();
  }
}

}  // namespace

vk::Format formatOf(PixelFormat format) {
  return format == PixelFormat::bgra8Unorm ? vk::Format::eB8G8R8A8Unorm : vk::Format::eR8G8B8A8Unorm;
}

std::shared_ptr<const DeviceContext> DeviceContext::make(VulkanOptions& options) {
  try {
    return makeBest(options);
  } catch (const ImportLosesDevice&) {
    options.importsFrames = false;
    return makeBest(options);
  }
}

std::shared_ptr<const DeviceContext> DeviceContext::makeBest(const VulkanOptions& options) {
  try {
    const auto instance = Instance::make(options);
    if (!instance) return nullptr;
    for (Instance::Candidate& candidate : instance->candidates(options.softwareToo)) {
      const std::string name = candidate.device.getProperties().deviceName;
      try {
        const auto context = std::make_shared<DeviceContext>(instance, std::move(candidate), options);
        tryWork(context);
        if (!importsAndSurvives(context)) context->importAlignment_ = 0;
        return context;
      } catch (const vk::SystemError& error) {
        log::Logger("gpu").error(name + " can't be used: " + error.what());
      }
    }
  } catch (const vk::SystemError& error) {
    log::Logger("gpu").info(std::string("Vulkan can't be used: ") + error.what());
  }
  return nullptr;
}

DeviceContext::DeviceContext(std::shared_ptr<const Instance> instance, Instance::Candidate candidate,
                             const VulkanOptions& options)
    : instance_(std::move(instance)),
      physical_(std::move(candidate.device)),
      queueFamily_(candidate.queueFamily),
      properties_(physical_.getProperties()),
      importAlignment_(options.importsFrames ? importAlignmentOf(physical_) : 0),
      nanosecondsPerTick_(velicor::gpu::vulkan::nanosecondsPerTick(physical_, queueFamily_)),
      device_(openDevice(physical_, queueFamily_, importAlignment_ != 0)),
      queue_(device_, queueFamily_, 0),
      memory_(physical_, device_),
      sampler_(makeSampler(device_)),
      setLayout_(makeSetLayout(device_, *sampler_)),
      pipelineLayout_(makePipelineLayout(device_, *setLayout_)),
      bgraPass_(makeRenderPass(device_, PixelFormat::bgra8Unorm)),
      rgbaPass_(makeRenderPass(device_, PixelFormat::rgba8Unorm)) {
  setName(*device_, "Velicor");
  setName(*queue_, "Velicor");
  setName(*sampler_, "texels");
  setName(*setLayout_, "arguments");
  setName(*pipelineLayout_, "functions");
  setName(*bgraPass_, "draw BGRA");
  setName(*rgbaPass_, "draw RGBA");
}

vk::RenderPass DeviceContext::renderPass(PixelFormat format) const {
  return format == PixelFormat::bgra8Unorm ? *bgraPass_ : *rgbaPass_;
}

void DeviceContext::setName(vk::ObjectType type, std::uint64_t handle, const std::string& name) const {
  if (instance_->namesObjects()) device_.setDebugUtilsObjectNameEXT({type, handle, name.c_str()});
}

}  // namespace velicor::gpu::vulkan
