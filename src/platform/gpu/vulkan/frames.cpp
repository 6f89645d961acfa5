#include "platform/gpu/vulkan/frames.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include <unistd.h>

#include "platform/base/recycling.h"
#include "platform/gpu/native/native_resources.h"

namespace velicor::gpu::vulkan {

namespace {

constexpr std::size_t idleStagings = 3;

// Below this a copy costs less than what the device loses by reading main memory (measured: 18 µs for
// 350 × 350; reading in place halves the way in at 1920 × 1080).
constexpr std::size_t worthImporting = std::size_t{1} << 20;

constexpr int maxShortages = 3;

std::size_t lengthOf(const PixelBuffer& picture) {
  return picture.bytesPerRow() * static_cast<std::size_t>(picture.height() - 1) + rowLength(picture.width());
}

std::size_t pageSize() {
  static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

std::size_t wholePages(std::size_t length) { return (length + pageSize() - 1) / pageSize() * pageSize(); }

// Pages are mapped as a whole, so that the last one may be read to its end.
bool isImportable(const DeviceContext& context, const PixelBuffer& picture) {
  const std::size_t length = lengthOf(picture);
  return context.importAlignment() != 0 && picture.mapping() && length >= worthImporting &&
         picture.bytesPerRow() % bytesPerPixel == 0 &&
         reinterpret_cast<std::uintptr_t>(picture.bytes()) % pageSize() == 0;
}

}  // namespace

std::shared_ptr<BufferBacking> StagingPool::take(const ContextRef& context, std::size_t size) {
  std::vector<std::shared_ptr<BufferBacking>> unfit;  // freed outside the lock
  {
    const std::scoped_lock guard(mutex_);
    while (!idle_.empty()) {
      auto staging = std::move(idle_.back());
      idle_.pop_back();
      if (staging->context == context && staging->size >= size && staging->size <= 4 * size) return staging;
      unfit.push_back(std::move(staging));
    }
  }
  // Some room, so that a window that is dragged larger finds one that fits for a while.
  return std::make_shared<BufferBacking>(context, size + size / 4, MemoryKind::upload, "staging");
}

void StagingPool::giveBack(std::shared_ptr<BufferBacking> staging) {
  const std::scoped_lock guard(mutex_);
  if (idle_.size() < idleStagings) idle_.push_back(std::move(staging));
}

VulkanFrame::VulkanFrame(std::shared_ptr<Device> device, const TextureDescriptor& descriptor,
                         PixelBufferRef picture, std::shared_ptr<BufferBacking> import)
    : VulkanTexture(std::move(device), descriptor, std::move(import), picture->bytesPerRow()),
      picture_(std::move(picture)),
      mustCopy_(false) {}

VulkanFrame::VulkanFrame(std::shared_ptr<Device> device, const TextureDescriptor& descriptor,
                         PixelBufferRef picture, std::shared_ptr<BufferBacking> staging,
                         std::shared_ptr<StagingPool> pool)
    : VulkanTexture(std::move(device), descriptor, std::move(staging), rowLength(descriptor.width)),
      picture_(std::move(picture)),
      pool_(std::move(pool)),
      mustCopy_(true) {}

VulkanFrame::~VulkanFrame() {
  if (pool_) pool_->giveBack(rowsAsTheyAre());
}

BufferBacking& VulkanFrame::rows(const ContextRef& context) {
  BufferBacking& rows = *rowsAsTheyAre();
  if (rows.context != context) throw FrameGone();
  if (std::exchange(mustCopy_, false))
    copyRows(rows.bytes(), bytesPerRow(), picture_->bytes(), picture_->bytesPerRow(), rowLength(width()),
             height());
  return rows;
}

std::shared_ptr<Texture> VulkanTextureCache::onTexture(const PixelBufferRef& buffer, int width, int height) {
  const ContextRef context = timeline_.context();
  if (!context) return nullptr;
  const TextureDescriptor descriptor{PixelFormat::bgra8Unorm, width, height, TextureUsage::shaderRead,
                                     StorageMode::deviceOnly};
  if (auto import = importOf(context, *buffer))
    return makeRecycled<VulkanFrame>(device_, descriptor, buffer, std::move(import));
  try {
    auto staging = pool_->take(context, rowLength(width) * static_cast<std::size_t>(height));
    return makeRecycled<VulkanFrame>(device_, descriptor, buffer, std::move(staging), pool_);
  } catch (const vk::SystemError&) {
    return nullptr;
  }
}

std::shared_ptr<BufferBacking> VulkanTextureCache::importOf(const ContextRef& context, PixelBuffer& picture) {
  if (refusing_.lock() == context || !isImportable(*context, picture)) return nullptr;
  const std::size_t length = wholePages(lengthOf(picture));
  const auto known = std::find_if(imports_.begin(), imports_.end(), [&](const Import& import) {
    return import.bytes == picture.bytes() && import.memory->mapping == picture.mapping() &&
           import.memory->size >= length && import.memory->context == context;
  });
  if (known != imports_.end()) return known->memory;
  try {
    auto memory = std::make_shared<BufferBacking>(
        context, HostMemory{picture.bytes(), length, picture.mapping()}, "frame");
    std::erase_if(imports_,
                  [&](const Import& import) { return import.memory->mapping == picture.mapping(); });
    imports_.push_back({picture.bytes(), memory});
    refusals_ = 0;
    return memory;
  } catch (const vk::OutOfDeviceMemoryError&) {
    noteShortage(context);
  } catch (const vk::OutOfHostMemoryError&) {
    noteShortage(context);
  } catch (const vk::SystemError&) {
    refusing_ = context;
  }
  return nullptr;
}

void VulkanTextureCache::noteShortage(const ContextRef& context) {
  if (++refusals_ < maxShortages) return;
  refusing_ = context;
  refusals_ = 0;
}

// A mapping that only its import still holds is not coming again.
void VulkanTextureCache::onFlush() {
  std::erase_if(imports_, [](const Import& import) { return import.memory->mapping.use_count() == 1; });
}

}  // namespace velicor::gpu::vulkan
