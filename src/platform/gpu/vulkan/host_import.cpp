#include "platform/gpu/vulkan/host_import.h"

#include <cstring>

#include <sys/mman.h>
#include <unistd.h>

#include "platform/gpu/vulkan/backing.h"

namespace velicor::gpu::vulkan {

namespace {

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

// Copies the first bytes and waits for it.
void copyPixel(const DeviceContext& context, const BufferBacking& from, const BufferBacking& to) {
  const vk::raii::Device& device = context.device();
  const vk::raii::CommandPool pool(device,
                                   {vk::CommandPoolCreateFlagBits::eTransient, context.queueFamily()});
  const auto commands =
      std::move(vk::raii::CommandBuffers(device, {*pool, vk::CommandBufferLevel::ePrimary, 1}).front());
  commands.begin({vk::CommandBufferUsageFlagBits::eOneTimeSubmit});
  commands.copyBuffer(*from.buffer, *to.buffer, vk::BufferCopy(0, 0, bytesPerPixel));
  commands.pipelineBarrier(
      vk::PipelineStageFlagBits::eTransfer, vk::PipelineStageFlagBits::eHost, {},
      vk::MemoryBarrier(vk::AccessFlagBits::eTransferWrite, vk::AccessFlagBits::eHostRead), {}, {});
  commands.end();
  const vk::raii::Fence done(device, vk::FenceCreateInfo());
  context.queue().submit(vk::SubmitInfo({}, {}, *commands), *done);
  constexpr std::uint64_t patience = 2'000'000'000;  // nanoseconds
  if (device.waitForFences(*done, VK_TRUE, patience) != vk::Result::eSuccess) device.waitIdle();
}

}  // namespace

bool canImport(const ContextRef& context) {
  const Page page;
  const vk::DeviceSize unit = context->importAlignment();
  if (!page.bytes() || unit == 0 || page.size() % unit != 0) return false;
  try {
    const BufferBacking source(context, HostMemory{page.bytes(), page.size(), nullptr}, "import probe");
    const BufferBacking copy(context, bytesPerPixel, MemoryKind::readBack, "import probe copy");
    // After the import: a driver that took a copy of the page would not see it.
    constexpr std::uint32_t pixel = 0x5A3CC3A5;
    std::memcpy(page.bytes(), &pixel, sizeof pixel);
    copyPixel(*context, source, copy);
    return std::memcmp(copy.bytes(), &pixel, sizeof pixel) == 0;
  } catch (const vk::SystemError&) {
    return false;
  }
}

}  // namespace velicor::gpu::vulkan
