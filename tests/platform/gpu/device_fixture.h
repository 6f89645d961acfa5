#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "platform/gpu/test_devices.h"

namespace velicor::gpu::test {

// Little kernels to see the device work with.
//   addOne, twice      buffer 0: one unsigned number
//   plainVertex        buffer 0: three vertices
//   showCoordinates    every pixel becomes (round(255 u), round(255 v), 0, 255) in the channels' order
//   addColor           texture 0: source; texture 1: the sum; bytes 2: four numbers to add; on Vulkan only
KernelBundle testKernels();

// A device with what tests work with.
class Workbench {
 protected:
  explicit Workbench(std::shared_ptr<Device> device) : device_(std::move(device)) {}

  std::shared_ptr<ComputePipeline> pipeline(const char* name) {
    return device_->makeComputePipeline(library_->function(name));
  }
  std::shared_ptr<RenderPipeline> coordinatesPipeline() {
    return device_->makeRenderPipeline(
        {library_->function("plainVertex"), library_->function("showCoordinates"), PixelFormat::bgra8Unorm});
  }

  std::shared_ptr<Texture> texture(int width, int height, StorageMode storageMode = StorageMode::shared,
                                   PixelFormat format = PixelFormat::rgba8Unorm) {
    return device_->makeTexture(
        {format, width, height,
         TextureUsage::shaderRead | TextureUsage::shaderWrite | TextureUsage::renderTarget, storageMode});
  }

  // A command buffer that runs the kernel once over one number.
  std::shared_ptr<CommandBuffer> numberWork(CommandQueue& queue, const char* kernel,
                                            const std::shared_ptr<Buffer>& number);

  static std::uint32_t& numberIn(Buffer& buffer) {
    return *reinterpret_cast<std::uint32_t*>(buffer.contents().data());
  }

  // All pixels, rows without gaps. Copies through a shared texture, so that any texture can be asked.
  std::vector<std::uint8_t> pixelsOf(const std::shared_ptr<Texture>& texture);

  std::shared_ptr<Device> device_;
  std::shared_ptr<CommandQueue> queue_ = device_->makeCommandQueue();
  std::shared_ptr<Library> library_ = device_->makeLibrary(testKernels());
};

class DeviceTest : public testing::TestWithParam<TestDevice>, protected Workbench {
 protected:
  DeviceTest() : Workbench(GetParam().make()) {}
};

}  // namespace velicor::gpu::test
