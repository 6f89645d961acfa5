#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <limits>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "analysis/metal_processor.h"
#include "platform/dispatch/main_queue.h"
#include "platform/gpu/vulkan/vulkan_device.h"
#include "support/brief.h"

// What the passes of an analysis cost on the best graphics processor, by its own clock; scopes are in every
// frame. With --software the processor may be one that computes on the main one. Times are the shortest of
// the frames of half a second, ten at least: other work on the machine only adds to them.
namespace {

using namespace velicor;
using namespace std::chrono_literals;
using Mode = MetalProcessor::Mode;
using Clock = std::chrono::steady_clock;

using Times = std::map<std::string, double, std::less<>>;  // of one command buffer, microseconds by pass

// Collects what finished command buffers took.
class Stopwatch {
 public:
  void add(std::span<const gpu::PassTime> passes) {
    Times times;
    for (const gpu::PassTime& pass : passes)
      times[pass.name] += pass.microseconds;
    const std::scoped_lock guard(mutex_);
    if (!times.empty()) buffers_.push_back(std::move(times));
  }

  std::vector<Times> take() {
    const std::scoped_lock guard(mutex_);
    return std::exchange(buffers_, {});
  }

 private:
  std::mutex mutex_;
  std::vector<Times> buffers_;
};

template <typename TimeOf>
double shortestOf(const std::vector<Times>& buffers, TimeOf timeOf) {
  double shortest = std::numeric_limits<double>::infinity();
  for (const Times& buffer : buffers)
    shortest = std::min(shortest, timeOf(buffer));
  return shortest;
}

double shortest(const std::vector<Times>& buffers, std::string_view pass) {
  return shortestOf(buffers, [&](const Times& times) {
    const auto found = times.find(pass);
    return found != times.end() ? found->second : 0.0;
  });
}

double shortestOfAll(const std::vector<Times>& buffers) {
  return shortestOf(buffers, [](const Times& times) {
    double sum = 0;
    for (const auto& [pass, microseconds] : times)
      sum += microseconds;
    return sum;
  });
}

PixelBufferRef flatFrame(gpu::Extent size) {
  auto frame = std::make_shared<PixelBuffer>(size.width, size.height);
  std::memset(frame->bytes(), 0x77, frame->bytesPerRow() * static_cast<std::size_t>(size.height));
  return frame;
}

PixelBufferRef noisyFrame(gpu::Extent size) {
  auto frame = flatFrame(size);
  std::mt19937 random(1);
  for (int y = 0; y < size.height; ++y) {
    std::byte* row = frame->bytes() + frame->bytesPerRow() * static_cast<std::size_t>(y);
    for (int x = 0; x < size.width; ++x, row += gpu::bytesPerPixel) {
      const auto pixel = static_cast<std::uint32_t>(random());
      std::memcpy(row, &pixel, sizeof pixel);
    }
  }
  return frame;
}

class Bench {
 public:
  Bench(std::shared_ptr<gpu::Device> device, Stopwatch& stopwatch)
      : device_(std::move(device)),
        queue_(device_->makeCommandQueue()),
        processor_(MetalProcessor::create(device_)),
        stopwatch_(stopwatch) {
    if (processor_) processor_->scopeDivider = 1;
  }

  // False where nothing can be measured.
  bool run(gpu::Extent size) {
    if (!processor_) return false;
    const auto noise = noisyFrame(size);
    const auto flat = analyses(flatFrame(size), Mode::skin);
    const auto skin = analyses(noise, Mode::skin);
    const auto exposure = analyses(noise, Mode::exposure);
    const double copy = shortest(copies(size), "copy");
    if (flat.empty() || skin.empty() || exposure.empty() || copy == 0) return false;

    std::printf("%d x %d\n", size.width, size.height);
    std::printf("  upload               %9.1f us\n", shortest(skin, "copy"));
    std::printf("  copy on the device   %9.1f us\n", copy);
    for (const auto& [name, times] : {std::pair("skin", &skin), std::pair("exposure", &exposure)}) {
      const double time = shortest(*times, "falseColor");
      std::printf("  falseColor %-9s %9.1f us  %.2f of the copy's speed\n", name, time, copy / time);
    }
    const double noisy = shortest(skin, "accumulateScopes"), even = shortest(flat, "accumulateScopes");
    std::printf("  accumulateScopes     %9.1f us  a flat frame %.1f us, %.2f times\n", noisy, even,
                even / noisy);
    for (const char* pass : {"fill", "renderVectorscope", "renderParade"})
      std::printf("  %-20s %9.1f us\n", pass, shortest(skin, pass));
    std::printf("  everything           %9.1f us\n", shortestOfAll(skin));
    return true;
  }

 private:
  template <typename Work>
  std::vector<Times> repeated(Work work) {
    for (int i = 0; i < 3; ++i)
      work();
    stopwatch_.take();
    const auto end = Clock::now() + benchmarks::unlessBrief(500ms, 0ms);
    for (int i = 0; i < benchmarks::unlessBrief(10, 1) || Clock::now() < end; ++i)
      work();
    return stopwatch_.take();
  }

  std::vector<Times> analyses(const PixelBufferRef& frame, Mode mode) {
    processor_->mode = mode;
    return repeated([&] {
      processor_->ingest(frame);
      const auto last = queue_->makeCommandBuffer();
      last->commit();
      last->waitUntilCompleted();
      dispatch::MainQueue::shared().runPending();
    });
  }

  // As many bytes read and written as falseColor does.
  std::vector<Times> copies(gpu::Extent size) {
    const gpu::TextureDescriptor descriptor{gpu::PixelFormat::bgra8Unorm, size.width, size.height,
                                            gpu::TextureUsage::shaderRead, gpu::StorageMode::deviceOnly};
    const auto from = device_->makeTexture(descriptor), to = device_->makeTexture(descriptor);
    return repeated([&] {
      const auto commands = queue_->makeCommandBuffer();
      commands->makeBlitEncoder()->copy({from, {}, size, to, {}});
      commands->commit();
      commands->waitUntilCompleted();
    });
  }

  std::shared_ptr<gpu::Device> device_;
  std::shared_ptr<gpu::CommandQueue> queue_;
  std::shared_ptr<MetalProcessor> processor_;
  Stopwatch& stopwatch_;
};

}  // namespace

int main(int argc, char** argv) {
  const bool software = argc > 1 && std::string_view(argv[1]) == "--software";
  Stopwatch stopwatch;
  gpu::VulkanOptions options;
  options.softwareToo = software;
  options.onPassTimes = [&](std::span<const gpu::PassTime> passes) { stopwatch.add(passes); };
  const auto device = gpu::makeVulkanDevice(options);
  if (!device) {
    std::fprintf(stderr, "no graphics processor%s\n", software ? "" : "; --software takes one without");
    return 1;
  }
  std::printf("%s\n", device->name().c_str());
  Bench bench(device, stopwatch);
  for (const gpu::Extent size : {gpu::Extent{640, 400}, gpu::Extent{1920, 1080}, gpu::Extent{3840, 2160}}) {
    if (!bench.run(size)) {
      std::fprintf(stderr, "the driver measures nothing\n");
      return 1;
    }
  }
}
