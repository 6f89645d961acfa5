// How frames get to the device, and what a steady stream of them costs.
#include <cstring>
#include <random>

#include <gmock/gmock.h>
#include <sys/mman.h>

#include "platform/gpu/device_fixture.h"
#include "platform/gpu/vulkan/faulty_loader.h"

namespace velicor::gpu::test {
namespace {

constexpr int width = 1001;
constexpr int height = 401;
constexpr std::size_t bytesPerRow = 4 * 1024;
constexpr std::size_t length = bytesPerRow * height;

// Memory as captured frames lie in.
std::shared_ptr<std::byte> sharedMapping() {
  void* const memory = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return {static_cast<std::byte*>(memory), [](std::byte* bytes) { munmap(bytes, length); }};
}

PixelBufferRef frameIn(const std::shared_ptr<std::byte>& mapping, unsigned seed) {
  std::mt19937 random(seed);
  for (std::size_t i = 0; i < length; ++i)
    mapping.get()[i] = static_cast<std::byte>(random());
  return std::make_shared<PixelBuffer>(width, height, bytesPerRow, mapping.get(), nullptr, mapping);
}

class FramesBench : private Workbench {
 public:
  FramesBench(const FaultyLoader& loader, bool imports)
      : Workbench(makeCheckedVulkanDevice(options(loader, imports))) {}

  std::vector<std::uint8_t> shown(const PixelBufferRef& frame) {
    cache_->flush();
    return pixelsOf(cache_->texture(frame, PixelFormat::bgra8Unorm, width, height));
  }
  void flush() { cache_->flush(); }

 private:
  static VulkanOptions options(const FaultyLoader& loader, bool imports) {
    VulkanOptions options;
    options.importsFrames = imports;
    options.entryPoint = loader.entryPoint();
    return options;
  }

  std::shared_ptr<TextureCache> cache_ = device_->makeTextureCache();
};

TEST(VulkanFrames, BothWaysGiveTheSamePictureAndAllocateOnce) {
  FaultyLoader loader;
  FramesBench importing(loader, true);
  FramesBench copying(loader, false);
  auto mapping = sharedMapping();
  for (unsigned seed = 1; seed <= 3; ++seed) {
    const auto frame = frameIn(mapping, seed);
    const auto pixels = copying.shown(frame);
    EXPECT_EQ(pixels, importing.shown(frame));
    EXPECT_EQ(0, std::memcmp(pixels.data(), mapping.get(), 4 * width));
    EXPECT_EQ(0, std::memcmp(pixels.data() + pixels.size() - 4 * width, mapping.get() + length - bytesPerRow,
                             4 * width));
    const int allocations = loader.allocations;
    if (seed == 1) continue;
    copying.shown(frame);
    importing.shown(frame);
    EXPECT_EQ(loader.allocations, allocations);
  }
  EXPECT_EQ(loader.imports, 1);
  const std::weak_ptr<std::byte> watched = mapping;
  mapping = nullptr;
  importing.flush();
  EXPECT_TRUE(watched.expired());
}

}  // namespace
}  // namespace velicor::gpu::test
