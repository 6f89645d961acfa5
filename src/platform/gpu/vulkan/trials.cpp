#include "platform/gpu/vulkan/trials.h"

#include <array>
#include <chrono>
#include <cstring>
#include <memory>
#include <thread>

#include <sys/mman.h>
#include <unistd.h>

#include "platform/gpu/vulkan/backing.h"

namespace velicor::gpu::vulkan {

namespace {

constexpr std::uint32_t pixel = 0x5A3CC3A5;

// One page of shared memory, as frames come in.
class Page {
 public:
  Page() {
    const int file = memfd_create("velicor import probe", MFD_CLOEXEC);
    if (file < 0) return;
    if (ftruncate(file, static_cast<off_t>(size_)) == 0) {
      void* const memory = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
      if (memory != MAP_FAILED) bytes_ = static_cast<std::byte*>(memory);
    }
    close(file);
  }
  ~Page() {
    if (bytes_) munmap(bytes_, size_);
  }
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;

  std::byte* bytes() const { return bytes_; }
  std::size_t size() const { return size_; }

 private:
  std::size_t size_ = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  std::byte* bytes_ = nullptr;
};

// Commands that run once, and whether the pixel came back.
struct Trial {
  explicit Trial(const ContextRef& trying)
      : context(trying),
        pool(context->device(), {vk::CommandPoolCreateFlagBits::eTransient, context->queueFamily()}),
        commands(std::move(
            vk::raii::CommandBuffers(context->device(), {*pool, vk::CommandBufferLevel::ePrimary, 1})
                .front())),
        done(context->device(), vk::FenceCreateInfo()),
        result(context, bytesPerPixel, MemoryKind::readBack, "trial result") {
    context->setName(*pool, "trial");
    context->setName(*commands, "trial");
    context->setName(*done, "trial");
    std::memset(result.bytes(), 0, bytesPerPixel);
    commands.begin({vk::CommandBufferUsageFlagBits::eOneTimeSubmit});
  }
  bool hasPixel() const { return std::memcmp(result.bytes(), &pixel, sizeof pixel) == 0; }

  ContextRef context;
  vk::raii::CommandPool pool;
  vk::raii::CommandBuffer commands;
  vk::raii::Fence done;
  BufferBacking result;
};

struct WorkTrial : Trial {
  explicit WorkTrial(const ContextRef& trying)
      : Trial(trying),
        image(context, {PixelFormat::rgba8Unorm, 1, 1, TextureUsage::shaderWrite, StorageMode::deviceOnly},
              "trial") {}
  ImageBacking image;
};

struct ImportTrial : Trial {
  ImportTrial(const ContextRef& trying, std::unique_ptr<Page> importedPage)
      : Trial(trying),
        page(std::move(importedPage)),
        source(context, HostMemory{page->bytes(), page->size(), nullptr}, "trial import") {}
  std::unique_ptr<Page> page;
  BufferBacking source;
};

// A wait that fails for want of memory says nothing about the work.
bool endsInTime(const Trial& trial) {
  constexpr std::uint64_t patience = 20'000'000;  // nanoseconds
  for (int wait = 0; wait < 100; ++wait) {
    try {
      if (trial.context->device().waitForFences(*trial.done, VK_TRUE, patience) == vk::Result::eSuccess)
        return true;
    } catch (const vk::DeviceLostError&) {
      throw;
    } catch (const vk::SystemError&) {
      std::this_thread::sleep_for(std::chrono::nanoseconds(patience));
    }
  }
  return false;
}

template <typename Kind>
void carryOut(std::unique_ptr<Kind>& trial) {
  using Memory = vk::AccessFlagBits;
  trial->commands.pipelineBarrier(vk::PipelineStageFlagBits::eTransfer, vk::PipelineStageFlagBits::eHost, {},
                                  vk::MemoryBarrier(Memory::eTransferWrite, Memory::eHostRead), {}, {});
  trial->commands.end();
  trial->context->queue().submit(vk::SubmitInfo({}, {}, *trial->commands), *trial->done);
  if (endsInTime(*trial)) return;
  static_cast<void>(trial.release());  // the driver may still be at it
  throw vk::DeviceLostError("a trial that does not end");
}

void paint(const vk::raii::CommandBuffer& commands, const ImageBacking& image) {
  using Layout = vk::ImageLayout;
  using Memory = vk::AccessFlagBits;
  using Stage = vk::PipelineStageFlagBits;
  const auto become = [&](Layout before, Layout after, vk::AccessFlags waitsFor, Memory next) {
    commands.pipelineBarrier(waitsFor ? Stage::eTransfer : Stage::eTopOfPipe, Stage::eTransfer, {}, {}, {},
                             vk::ImageMemoryBarrier(waitsFor, next, before, after, VK_QUEUE_FAMILY_IGNORED,
                                                    VK_QUEUE_FAMILY_IGNORED, *image.image, colorRange));
  };
  std::array<float, bytesPerPixel> color{};
  for (std::size_t i = 0; i < color.size(); ++i)
    color[i] = static_cast<float>(pixel >> 8 * i & 255) / 255.0F;
  become(Layout::eUndefined, Layout::eTransferDstOptimal, {}, Memory::eTransferWrite);
  commands.clearColorImage(*image.image, Layout::eTransferDstOptimal, vk::ClearColorValue(color), colorRange);
  become(Layout::eTransferDstOptimal, Layout::eTransferSrcOptimal, Memory::eTransferWrite,
         Memory::eTransferRead);
}

}  // namespace

void tryWork(const ContextRef& context) {
  auto trial = std::make_unique<WorkTrial>(context);
  paint(trial->commands, trial->image);
  trial->commands.copyImageToBuffer(*trial->image.image, vk::ImageLayout::eTransferSrcOptimal,
                                    *trial->result.buffer,
                                    vk::BufferImageCopy(0, 0, 0, colorLayer, {}, {1, 1, 1}));
  carryOut(trial);
  if (!trial->hasPixel()) throw vk::UnknownError("it paints another colour than it was told");
}

bool canImport(const ContextRef& context) {
  auto page = std::make_unique<Page>();
  const vk::DeviceSize unit = context->importAlignment();
  if (!page->bytes() || unit == 0 || page->size() % unit != 0) return false;
  try {
    auto trial = std::make_unique<ImportTrial>(context, std::move(page));
    // After the import: a driver that took a copy of the page would not see it.
    std::memcpy(trial->page->bytes(), &pixel, sizeof pixel);
    trial->commands.copyBuffer(*trial->source.buffer, *trial->result.buffer,
                               vk::BufferCopy(0, 0, bytesPerPixel));
    carryOut(trial);
    return trial->hasPixel();
  } catch (const vk::DeviceLostError&) {
    throw;
  } catch (const vk::SystemError&) {
    return false;
  }
}

}  // namespace velicor::gpu::vulkan
