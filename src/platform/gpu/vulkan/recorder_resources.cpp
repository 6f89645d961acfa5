// How the recorder makes resources ready for commands.
#include <algorithm>
#include <utility>

#include "platform/gpu/misuse.h"
#include "platform/gpu/vulkan/accesses.h"
#include "platform/gpu/vulkan/recorder.h"

namespace velicor::gpu::vulkan {

namespace {

bool isStoredTo(const Texture& texture) { return allows(texture.usage(), TextureUsage::shaderWrite); }

vk::AccessFlags flags(VkAccessFlags access) { return vk::AccessFlags(access); }

}  // namespace

void Recorder::bind(const ShaderFacts& facts, const Bindings& bindings, VkPipelineStageFlags stage) {
  for (const std::uint32_t binding : facts.bindings) {
    const std::size_t index = binding % shader_interface::storedTextures;
    if (binding < shader_interface::buffers) {
      bindTexture(binding, bindings.textures[index], stage);
    } else {
      bindBuffer(binding, bindings.buffers[index], stage);
    }
  }
}

void Recorder::bindTexture(std::uint32_t binding, const std::shared_ptr<Texture>& texture,
                           VkPipelineStageFlags stage) {
  require(texture != nullptr, "a kernel reads a texture index that nothing is bound to");
  const bool stores = binding >= shader_interface::storedTextures;
  require(!stores || (isStoredTo(*texture) && texture->pixelFormat() == PixelFormat::rgba8Unorm),
          "a kernel writes a texture that can't be written");
  const Access access =
      stores ? accesses::storeToImage(stage) : accesses::readImage(stage, isStoredTo(*texture));
  const ImageBacking& image = use(static_cast<VulkanTexture&>(*texture), access);
  boundImages_[binding] = {{}, *image.view, static_cast<vk::ImageLayout>(access.layout)};
  bound_.push_back({{},
                    binding,
                    0,
                    1,
                    stores ? vk::DescriptorType::eStorageImage : vk::DescriptorType::eCombinedImageSampler,
                    &boundImages_[binding]});
}

void Recorder::bindBuffer(std::uint32_t binding, const decltype(Bindings::buffers)::value_type& buffer,
                          VkPipelineStageFlags stage) {
  if (const auto* slice = std::get_if<BufferSlice>(&buffer)) {
    BufferBacking& backing = static_cast<VulkanBuffer&>(*slice->buffer).backing(context_);
    touch(backing, accesses::functionBuffer(stage));
    boundBuffers_[binding] =
        vk::DescriptorBufferInfo(*backing.buffer, slice->offset, slice->buffer->length() - slice->offset);
  } else {
    const auto* bytes = std::get_if<InlineBytes>(&buffer);
    require(bytes != nullptr, "a kernel reads a buffer that is too short or not bound");
    boundBuffers_[binding] = flight_->put(recording_->bytesOf(*bytes));
  }
  bound_.push_back({{}, binding, 0, 1, vk::DescriptorType::eStorageBuffer, nullptr, &boundBuffers_[binding]});
}

vk::DescriptorSet Recorder::descriptorSet() {
  std::uint32_t bindings = 0;
  for (const vk::WriteDescriptorSet& write : bound_)
    bindings |= std::uint32_t{1} << write.dstBinding;
  const vk::DescriptorSet set = flight_->nextSet(bindings);
  for (vk::WriteDescriptorSet& write : bound_)
    write.dstSet = set;
  context_->device().updateDescriptorSets(bound_, {});
  bound_.clear();
  return set;
}

ImageBacking& Recorder::use(VulkanTexture& texture, const Access& access, bool overwrites) {
  ImageBacking& image = texture.image(context_);
  if (overwrites) {
    setRowsAreNewer(texture, false);
  } else if (texture.rowsAreNewer) {
    upload(texture, image);
  } else if (image.usage.layout() == VK_IMAGE_LAYOUT_UNDEFINED) {
    blank(image);
  }
  touch(image, access);
  const bool isNoted =
      std::find(writtenWithRows_.begin(), writtenWithRows_.end(), &texture) != writtenWithRows_.end();
  if (access.writes && texture.storageMode() == StorageMode::shared && !isNoted)
    writtenWithRows_.push_back(&texture);
  return image;
}

void Recorder::upload(VulkanTexture& texture, ImageBacking& image) {
  BufferBacking& rows = texture.rows(context_);
  touch(rows, accesses::copyFromBuffer);
  touch(image, accesses::copyToImage);
  const Extent size = texture.size();
  commands().copyBufferToImage(
      *rows.buffer, *image.image, vk::ImageLayout::eTransferDstOptimal,
      vk::BufferImageCopy(
          0, static_cast<std::uint32_t>(texture.bytesPerRow() / bytesPerPixel), 0, colorLayer, {},
          {static_cast<std::uint32_t>(size.width), static_cast<std::uint32_t>(size.height), 1}));
  setRowsAreNewer(texture, false);
}

void Recorder::download(VulkanTexture& texture) {
  const ImageBacking& image = use(texture, accesses::copyFromImage);
  BufferBacking& rows = texture.rows(context_);
  touch(rows, accesses::copyToBuffer);
  const Extent size = texture.size();
  commands().copyImageToBuffer(*image.image, vk::ImageLayout::eTransferSrcOptimal, *rows.buffer,
                               vk::BufferImageCopy(0, 0, 0, colorLayer, {},
                                                   {static_cast<std::uint32_t>(size.width),
                                                    static_cast<std::uint32_t>(size.height), 1}));
}

void Recorder::blank(ImageBacking& image) {
  touch(image, accesses::copyToImage);
  commands().clearColorImage(*image.image, vk::ImageLayout::eTransferDstOptimal, vk::ClearColorValue(),
                             colorRange);
}

void Recorder::setRowsAreNewer(VulkanTexture& texture, bool newer) {
  newerBefore_.emplace_back(&texture, std::exchange(texture.rowsAreNewer, newer));
}

void Recorder::touch(BufferBacking& buffer, const Access& access) {
  usagesBefore_.emplace_back(&buffer.usage, buffer.usage);
  const auto wait = buffer.usage.then(access);
  if (!wait) return;
  noteWait(*wait, access);
  bufferBarriers_.push_back({flags(wait->access), flags(access.access), VK_QUEUE_FAMILY_IGNORED,
                             VK_QUEUE_FAMILY_IGNORED, *buffer.buffer, 0, VK_WHOLE_SIZE});
}

void Recorder::touch(ImageBacking& image, const Access& access) {
  usagesBefore_.emplace_back(&image.usage, image.usage);
  const auto wait = image.usage.then(access);
  if (!wait) return;
  // The barriers of one call have no order.
  const auto isSame = [&](const vk::ImageMemoryBarrier& earlier) { return earlier.image == *image.image; };
  if (std::any_of(imageBarriers_.begin(), imageBarriers_.end(), isSame)) commands();
  noteWait(*wait, access);
  imageBarriers_.push_back({flags(wait->access), flags(access.access),
                            static_cast<vk::ImageLayout>(wait->layout),
                            static_cast<vk::ImageLayout>(access.layout), VK_QUEUE_FAMILY_IGNORED,
                            VK_QUEUE_FAMILY_IGNORED, *image.image, colorRange});
}

void Recorder::noteWait(const Wait& wait, const Access& access) {
  constexpr VkPipelineStageFlags nothing = VK_PIPELINE_STAGE_TOP_OF_PIPE_BIT;
  sourceStages_ |= wait.stages != 0 ? wait.stages : nothing;
  destinationStages_ |= access.stages;
}

const vk::raii::CommandBuffer& Recorder::commands() {
  if (destinationStages_ != 0) {
    flight_->commands().pipelineBarrier(vk::PipelineStageFlags(sourceStages_),
                                        vk::PipelineStageFlags(destinationStages_), {}, {}, bufferBarriers_,
                                        imageBarriers_);
    sourceStages_ = 0;
    destinationStages_ = 0;
    bufferBarriers_.clear();
    imageBarriers_.clear();
  }
  return flight_->commands();
}

}  // namespace velicor::gpu::vulkan
