#include "platform/gpu/vulkan/backing.h"

#include <algorithm>
#include <utility>

namespace velicor::gpu::vulkan {

namespace {

vk::raii::Buffer makeBuffer(const vk::raii::Device& device, std::size_t size) {
  using Usage = vk::BufferUsageFlagBits;
  // Fills work on whole words.
  const vk::DeviceSize words = (size + 3) / 4;
  return {device, vk::BufferCreateInfo({}, words * 4,
                                       Usage::eStorageBuffer | Usage::eTransferSrc | Usage::eTransferDst)};
}

vk::ImageUsageFlags imageUsage(const TextureDescriptor& descriptor) {
  using Usage = vk::ImageUsageFlagBits;
  vk::ImageUsageFlags usage = Usage::eTransferSrc | Usage::eTransferDst | Usage::eSampled;
  // Few devices store to BGRA images, and no function does.
  if (allows(descriptor.usage, TextureUsage::shaderWrite) &&
      descriptor.pixelFormat == PixelFormat::rgba8Unorm)
    usage |= Usage::eStorage;
  if (allows(descriptor.usage, TextureUsage::renderTarget)) usage |= Usage::eColorAttachment;
  return usage;
}

vk::raii::Image makeImage(const DeviceContext& context, const TextureDescriptor& descriptor) {
  const auto width = static_cast<std::uint32_t>(descriptor.width);
  const auto height = static_cast<std::uint32_t>(descriptor.height);
  if (std::max(width, height) > context.limits().maxImageDimension2D)
    throw vk::OutOfDeviceMemoryError("an image larger than the device can have");
  return {context.device(), vk::ImageCreateInfo({}, vk::ImageType::e2D, formatOf(descriptor.pixelFormat),
                                                {width, height, 1}, 1, 1, vk::SampleCountFlagBits::e1,
                                                vk::ImageTiling::eOptimal, imageUsage(descriptor))};
}

vk::raii::Buffer makeImportBuffer(const vk::raii::Device& device, std::size_t size) {
  const vk::StructureChain chain(
      vk::BufferCreateInfo({}, size, vk::BufferUsageFlagBits::eTransferSrc),
      vk::ExternalMemoryBufferCreateInfo(vk::ExternalMemoryHandleTypeFlagBits::eHostAllocationEXT));
  return {device, chain.get()};
}

vk::raii::DeviceMemory importMemory(const DeviceContext& context, const HostMemory& host,
                                    const vk::MemoryRequirements& requirements) {
  constexpr auto handle = vk::ExternalMemoryHandleTypeFlagBits::eHostAllocationEXT;
  const auto pointer = context.device().getMemoryHostPointerPropertiesEXT(handle, host.bytes);
  // Coherent ones: nobody flushes what the main processor writes there.
  const auto types =
      context.memory().typesFor(requirements.memoryTypeBits & pointer.memoryTypeBits, MemoryKind::readBack);
  const vk::DeviceSize unit = context.importAlignment();
  const vk::DeviceSize length = (host.length + unit - 1) / unit * unit;
  if (types.empty() || requirements.size > length)
    throw vk::InvalidExternalHandleError("no type of memory for main memory");
  const vk::StructureChain chain(vk::MemoryAllocateInfo(length, types.front()),
                                 vk::ImportMemoryHostPointerInfoEXT(handle, host.bytes));
  return {context.device(), chain.get()};
}

vk::raii::ImageView makeView(const vk::raii::Device& device, vk::Image image, PixelFormat format) {
  return {device,
          vk::ImageViewCreateInfo({}, image, vk::ImageViewType::e2D, formatOf(format), {}, colorRange)};
}

vk::raii::Framebuffer makeFramebuffer(const DeviceContext& context, vk::ImageView view,
                                      const TextureDescriptor& descriptor) {
  return {context.device(), vk::FramebufferCreateInfo({}, context.renderPass(descriptor.pixelFormat), view,
                                                      static_cast<std::uint32_t>(descriptor.width),
                                                      static_cast<std::uint32_t>(descriptor.height), 1)};
}

}  // namespace

BufferBacking::BufferBacking(ContextRef deviceContext, std::size_t length, MemoryKind kind,
                             const std::string& name)
    : context(std::move(deviceContext)), size(length), buffer(makeBuffer(context->device(), size)) {
  memory = context->memory().take(buffer.getMemoryRequirements(), kind);
  buffer.bindMemory(*memory->memory, 0);
  context->setName(*memory->memory, name);
  context->setName(*buffer, name);
}

BufferBacking::BufferBacking(ContextRef deviceContext, HostMemory host, const std::string& name)
    : context(std::move(deviceContext)),
      size(host.length),
      mapping(std::move(host.mapping)),
      buffer(makeImportBuffer(context->device(), size)) {
  imported = importMemory(*context, host, buffer.getMemoryRequirements());
  buffer.bindMemory(*imported, 0);
  context->setName(*imported, name);
  context->setName(*buffer, name);
}

ImageBacking::ImageBacking(ContextRef deviceContext, const TextureDescriptor& descriptor,
                           const std::string& name)
    : context(std::move(deviceContext)), image(makeImage(*context, descriptor)) {
  memory = context->memory().take(image.getMemoryRequirements(), MemoryKind::deviceOnly);
  image.bindMemory(*memory->memory, 0);
  view = makeView(context->device(), *image, descriptor.pixelFormat);
  context->setName(*memory->memory, name);
  context->setName(*image, name);
  context->setName(*view, name);
  if (!allows(descriptor.usage, TextureUsage::renderTarget)) return;
  framebuffer = makeFramebuffer(*context, *view, descriptor);
  context->setName(**framebuffer, name);
}

}  // namespace velicor::gpu::vulkan
