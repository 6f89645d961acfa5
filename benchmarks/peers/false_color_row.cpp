#include <algorithm>
#include <barrier>
#include <chrono>
#include <cstring>
#include <thread>

#include "analysis/kernels/default_library.h"
#include "analysis/kernels/kernel_interface.h"
#include "palette/palette.h"
#include "peers/rows.h"
#include "platform/gpu/native/native_device.h"
#include "support/brief.h"
#include "support/pictures.h"

namespace velicor::benchmarks {

namespace {

constexpr gpu::Extent size{3840, 2160};
constexpr std::size_t frameBytes = gpu::bytesPerPixel * size.width * size.height;
const int rounds = unlessBrief(15, 2);

double secondsOf(auto&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Copies a frame with as many threads as the device computes with, each an equal part. The threads stay.
class Copy {
 public:
  Copy() : from_(frameBytes, std::byte{1}), to_(frameBytes) {
    for (unsigned part = 1; part < parts_; ++part) {
      helpers_.emplace_back([this, part] {
        while (true) {
          begin_.arrive_and_wait();
          if (ending_) return;
          copyPart(part);
          end_.arrive_and_wait();
        }
      });
    }
  }

  ~Copy() {
    ending_ = true;
    begin_.arrive_and_wait();
  }

  Copy(const Copy&) = delete;
  Copy& operator=(const Copy&) = delete;

  unsigned threads() const { return parts_; }

  void operator()() {
    begin_.arrive_and_wait();
    copyPart(0);
    end_.arrive_and_wait();
  }

 private:
  void copyPart(unsigned part) {
    const std::size_t first = frameBytes * part / parts_;
    std::memcpy(to_.data() + first, from_.data() + first, frameBytes * (part + 1) / parts_ - first);
  }

  const unsigned parts_ = std::max(1U, std::thread::hardware_concurrency());
  std::vector<std::byte> from_;
  std::vector<std::byte> to_;
  std::barrier<> begin_{static_cast<std::ptrdiff_t>(parts_)};
  std::barrier<> end_{static_cast<std::ptrdiff_t>(parts_)};
  bool ending_ = false;
  std::vector<std::jthread> helpers_;
};

// The kernel alone, from one texture of the device to another.
class FalseColor {
 public:
  explicit FalseColor(Picture picture) {
    const PixelBufferRef frame = makePicture(picture, size.width, size.height);
    source_ = cache_->texture(frame, gpu::PixelFormat::bgra8Unorm, size.width, size.height);
    result_ = device_->makeTexture({gpu::PixelFormat::rgba8Unorm, size.width, size.height,
                                    gpu::TextureUsage::shaderRead | gpu::TextureUsage::shaderWrite,
                                    gpu::StorageMode::deviceOnly});
  }

  void operator()(std::uint32_t mode) const {
    const auto commands = queue_->makeCommandBuffer();
    const auto encoder = commands->makeComputeEncoder();
    encoder->setPipeline(pipeline_);
    encoder->setTexture(source_, 0);
    encoder->setTexture(result_, 1);
    encoder->setValue(mode, 0);
    encoder->setValue(kernels::Offset{}, 1);
    encoder->setValue(Palette::standard().buffer(), 2);
    constexpr int side = kernels::threadgroupSide;
    encoder->dispatchThreadgroups({size.width / side, size.height / side, 1}, {side, side, 1});
    encoder->endEncoding();
    commands->commit();
    commands->waitUntilCompleted();
  }

 private:
  std::shared_ptr<gpu::Device> device_ = gpu::makeNativeDevice();
  std::shared_ptr<gpu::CommandQueue> queue_ = device_->makeCommandQueue();
  std::shared_ptr<gpu::TextureCache> cache_ = device_->makeTextureCache();
  std::shared_ptr<gpu::ComputePipeline> pipeline_ =
      device_->makeComputePipeline(defaultLibrary(device_)->function("falseColor"));
  std::shared_ptr<gpu::Texture> source_;
  std::shared_ptr<gpu::Texture> result_;
};

}  // namespace

void addFalseColorRow(Table& table) {
  Copy copy;
  std::vector<double> copyTimes, kernelTimes, ratios;
  std::string each;
  for (const Picture picture : allPictures) {
    const FalseColor falseColor(picture);
    std::vector<double> copies, skin, exposure;
    for (int round = 0; round < rounds; ++round) {
      copies.push_back(secondsOf(copy));
      skin.push_back(secondsOf([&] { falseColor(1); }));
      exposure.push_back(secondsOf([&] { falseColor(2); }));
    }
    copyTimes.push_back(median(copies) * 1e3);
    kernelTimes.push_back(std::max(median(skin), median(exposure)) * 1e3);
    ratios.push_back(kernelTimes.back() / copyTimes.back());
    each += (each.empty() ? "" : ", ") + std::string(nameOf(picture)) + " " + rounded(ratios.back(), 2);
  }
  table.atMost("falseColor at 3840 × 2160, the slower mode, wall time beside memcpy of the frame on " +
                   std::to_string(copy.threads()) + " threads",
               2.5, " times", *std::ranges::max_element(ratios),
               each + " (" + rangeOf(kernelTimes, 1) + " ms, copy " + rangeOf(copyTimes, 1) + " ms)");
}

}  // namespace velicor::benchmarks
