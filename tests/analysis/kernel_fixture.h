#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
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

// Runs the kernels of one device one by one, as the processor and the views bind them.
class KernelRunner {
 public:
  explicit KernelRunner(std::shared_ptr<gpu::Device> device) : device_(std::move(device)) {}

  std::shared_ptr<gpu::Texture> wrap(const PixelBufferRef& frame);
  Scopes scopesOf(const PixelBufferRef& frame, int stride = 1);
  Pixels falseColorOf(const PixelBufferRef& frame, int mode,
                      const Palette::Buffer& palette = Palette::standard().buffer());

  // The frame drawn into a target of this size, on near black, as the loupe or as the scopes.
  Pixels drawn(const PixelBufferRef& frame, gpu::Extent target, kernels::Scale scale = {},
               const char* fragment = "blitFragment");

 protected:
  std::shared_ptr<gpu::Device> device_;

 private:
  std::shared_ptr<gpu::Texture> picture(int width, int height);
  const std::shared_ptr<gpu::ComputePipeline>& pipeline(const std::string& name);
  const std::shared_ptr<gpu::RenderPipeline>& blit(const std::string& fragment);
  void renderScope(gpu::CommandBuffer& commands, const char* kernel,
                   const std::shared_ptr<gpu::Buffer>& counters, float gain,
                   const std::shared_ptr<gpu::Texture>& image);

  std::shared_ptr<gpu::CommandQueue> queue_ = device_->makeCommandQueue();
  std::shared_ptr<gpu::Library> library_ = defaultLibrary(device_);
  std::map<std::string, std::shared_ptr<gpu::ComputePipeline>> pipelines_;
  std::map<std::string, std::shared_ptr<gpu::RenderPipeline>> blits_;
};

class KernelTest : public testing::TestWithParam<gpu::test::TestDevice>, protected KernelRunner {
 protected:
  KernelTest() : KernelRunner(GetParam().make()) {}
};

}  // namespace velicor::test
