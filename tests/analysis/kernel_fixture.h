#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "analysis/kernels/default_library.h"
#include "analysis/kernels/kernel_interface.h"
#include "palette/palette.h"
#include "platform/base/pixel_buffer.h"
#include "platform/gpu/test_devices.h"

namespace velicor::test {

// 8-bit red, green, blue.
using Rgb = std::array<int, 3>;

// A frame whose pixels come from a function of their position.
PixelBufferRef frameOf(int width, int height, const std::function<Rgb(int x, int y)>& color);
PixelBufferRef plainFrame(int width, int height, Rgb color);

// Pixels in main memory, whatever the texture's byte order.
struct Pixels {
  int width = 0;
  int height = 0;
  std::vector<std::array<std::uint8_t, 4>> rgba;
  const std::array<std::uint8_t, 4>& at(int x, int y) const {
    return rgba[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
  }
  Rgb rgb(int x, int y) const { return {at(x, y)[0], at(x, y)[1], at(x, y)[2]}; }
};

// Waits for everything committed before.
Pixels readPixels(const std::shared_ptr<gpu::Texture>& texture);

struct Scopes {
  std::vector<std::uint32_t> vectorscope;
  std::vector<std::uint32_t> parade;
  Pixels vectorscopeImage;
  Pixels paradeImage;

  std::uint32_t chromaBin(int row, int column) const;
  std::uint32_t paradeBin(int plane, int level, int column) const;
  std::uint64_t paradeSum(int plane) const;
  std::uint64_t vectorscopeSum() const;
};

// Runs the kernels one by one, as the processor binds them.
class KernelTest : public testing::TestWithParam<gpu::test::TestDevice> {
 protected:
  std::shared_ptr<gpu::Texture> wrap(const PixelBufferRef& frame);
  std::shared_ptr<gpu::Texture> picture(int width, int height);
  Scopes scopesOf(const PixelBufferRef& frame, int stride = 1);
  Pixels falseColorOf(const PixelBufferRef& frame, int mode);

  std::shared_ptr<gpu::Device> device_ = GetParam().make();
  std::shared_ptr<gpu::CommandQueue> queue_ = device_->makeCommandQueue();
  std::shared_ptr<gpu::Library> library_ = defaultLibrary(device_);

 private:
  std::shared_ptr<gpu::ComputePipeline> pipeline(const char* name) {
    return device_->makeComputePipeline(library_->function(name));
  }
  void renderScope(gpu::CommandBuffer& commands, const char* kernel,
                   const std::shared_ptr<gpu::Buffer>& counters, float gain,
                   const std::shared_ptr<gpu::Texture>& image);
};

}  // namespace velicor::test
