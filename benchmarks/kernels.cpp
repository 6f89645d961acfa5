#include <bit>
#include <cstring>
#include <string>
#include <utility>

#include <benchmark/benchmark.h>

#include "analysis/kernels/default_library.h"
#include "analysis/kernels/kernel_interface.h"
#include "analysis/metal_processor.h"
#include "palette/palette.h"
#include "platform/gpu/native/execute.h"
#include "platform/gpu/native/native_device.h"
#include "support/pictures.h"

// What each pass of an analysis and of a view costs on the native device, on the threads that it has, and
// beside it a plain copy of the frame on the same threads. Time is the wall's, CPU the whole process's.
namespace {

using namespace velicor;

constexpr gpu::Extent sizes[] = {{350, 350}, {640, 400}, {1920, 1080}, {3840, 2160}};

constexpr int groups(int threads) {
  return (threads + kernels::threadgroupSide - 1) / kernels::threadgroupSide;
}

template <typename T>
gpu::InlineBytes inlineBytes(gpu::Recording& to, const T& value) {
  return to.keep(std::as_bytes(std::span<const T, 1>(&value, 1)));
}

// One frame with everything that its passes read and write.
class Scene {
 public:
  Scene(benchmarks::Picture picture, gpu::Extent size)
      : size_(size),
        wrapped_(
            device_->makeTextureCache()->texture(benchmarks::makePicture(picture, size.width, size.height),
                                                 gpu::PixelFormat::bgra8Unorm, size.width, size.height)) {
    gpu::Recording recording;
    copyFrame(recording);
    execute(recording);
  }

  void copyFrame(gpu::Recording& to) const {
    to.passes.emplace_back(gpu::TextureCopy{wrapped_, {}, size_, frame_, {}});
  }

  void falseColor(gpu::Recording& to, MetalProcessor::Mode mode) const {
    gpu::Bindings bindings;
    bindings.textures = {frame_, preview_};
    bindings.buffers = {inlineBytes(to, static_cast<std::uint32_t>(MetalProcessor::id(mode))),
                        inlineBytes(to, kernels::Offset{}), inlineBytes(to, Palette::standard().buffer())};
    dispatch(to, "falseColor", std::move(bindings), size_);
  }

  void clearCounters(gpu::Recording& to) const {
    for (const auto& counters : {chroma_, parade_})
      to.passes.emplace_back(gpu::BufferFill{counters, 0, counters->length(), 0});
  }

  void accumulate(gpu::Recording& to) const {
    const int stride = MetalProcessor::sampleStride(size_.width, size_.height);
    gpu::Bindings bindings;
    bindings.textures = {frame_};
    bindings.buffers = {gpu::BufferSlice{chroma_}, gpu::BufferSlice{parade_},
                        inlineBytes(to, kernels::Rectangle{0, 0, static_cast<std::uint32_t>(size_.width),
                                                           static_cast<std::uint32_t>(size_.height)}),
                        inlineBytes(to, static_cast<std::uint32_t>(stride))};
    dispatch(to, "accumulateScopes", std::move(bindings),
             {(size_.width + stride - 1) / stride, (size_.height + stride - 1) / stride});
  }

  void vectorscope(gpu::Recording& to) const {
    scopeImage(to, "renderVectorscope", chroma_, 1 / 8.9F, chromaImage_);
  }
  void parade(gpu::Recording& to) const { scopeImage(to, "renderParade", parade_, 1 / 7.8F, paradeImage_); }

  // The preview, shown at its own size or at three quarters of it.
  void draw(gpu::Recording& to, int quarters) const {
    gpu::Draw draw;
    draw.pipeline = blit_;
    draw.vertex.buffers[0] = inlineBytes(to, kernels::Scale{});
    draw.fragment.textures[0] = preview_;
    draw.vertexCount = 3;
    to.passes.emplace_back(gpu::RenderPass{quarters == 4 ? target_ : smallTarget_, {}, to.draws.size(), 1});
    to.draws.push_back(std::move(draw));
  }

  void analyse(gpu::Recording& to) const {
    falseColor(to, MetalProcessor::Mode::skin);
    clearCounters(to);
    accumulate(to);
    vectorscope(to);
    parade(to);
  }

  void execute(const gpu::Recording& recording) const {
    static gpu::Crew crew(gpu::allThreads());
    gpu::execute(recording, crew);
  }

  std::size_t frameBytes() const {
    return gpu::bytesPerPixel * static_cast<std::size_t>(size_.width) *
           static_cast<std::size_t>(size_.height);
  }

 private:
  std::shared_ptr<gpu::Texture> texture(gpu::PixelFormat format, gpu::Extent size,
                                        gpu::TextureUsage usage) const {
    return device_->makeTexture({format, size.width, size.height, usage, gpu::StorageMode::deviceOnly});
  }
  std::shared_ptr<gpu::Texture> picture(gpu::Extent size) const {
    return texture(gpu::PixelFormat::rgba8Unorm, size,
                   gpu::TextureUsage::shaderRead | gpu::TextureUsage::shaderWrite);
  }
  std::shared_ptr<gpu::Texture> target(gpu::Extent size) const {
    return texture(gpu::PixelFormat::bgra8Unorm, size, gpu::TextureUsage::renderTarget);
  }

  void dispatch(gpu::Recording& to, const char* kernel, gpu::Bindings bindings, gpu::Extent grid) const {
    to.passes.emplace_back(gpu::Dispatch{device_->makeComputePipeline(library_->function(kernel)),
                                         std::move(bindings),
                                         {groups(grid.width), groups(grid.height), 1},
                                         {kernels::threadgroupSide, kernels::threadgroupSide, 1}});
  }

  void scopeImage(gpu::Recording& to, const char* kernel, const std::shared_ptr<gpu::Buffer>& counters,
                  float gain, const std::shared_ptr<gpu::Texture>& image) const {
    gpu::Bindings bindings;
    bindings.textures = {image};
    bindings.buffers = {gpu::BufferSlice{counters}, inlineBytes(to, gain)};
    dispatch(to, kernel, std::move(bindings), image->size());
  }

  gpu::Extent size_;
  std::shared_ptr<gpu::Device> device_ = gpu::makeNativeDevice();
  std::shared_ptr<gpu::Library> library_ = defaultLibrary(device_);
  std::shared_ptr<gpu::RenderPipeline> blit_ = device_->makeRenderPipeline(
      {library_->function("blitVertex"), library_->function("blitFragment"), gpu::PixelFormat::bgra8Unorm});
  std::shared_ptr<gpu::Texture> wrapped_;
  std::shared_ptr<gpu::Texture> frame_ =
      texture(gpu::PixelFormat::bgra8Unorm, size_, gpu::TextureUsage::shaderRead);
  std::shared_ptr<gpu::Texture> preview_ = picture(size_);
  std::shared_ptr<gpu::Texture> target_ = target(size_);
  std::shared_ptr<gpu::Texture> smallTarget_ = target({size_.width * 3 / 4, size_.height * 3 / 4});
  std::shared_ptr<gpu::Buffer> chroma_ =
      device_->makeBuffer(kernels::vectorscopeBytes, gpu::StorageMode::deviceOnly);
  std::shared_ptr<gpu::Buffer> parade_ =
      device_->makeBuffer(kernels::paradeBytes, gpu::StorageMode::deviceOnly);
  std::shared_ptr<gpu::Texture> chromaImage_ = picture({kernels::vectorscopeSide, kernels::vectorscopeSide});
  std::shared_ptr<gpu::Texture> paradeImage_ = picture({kernels::paradeWidth, kernels::paradeHeight});
};

using Record = void (*)(const Scene& scene, gpu::Recording& to);

void measure(benchmark::State& state, benchmarks::Picture picture, gpu::Extent size, Record record) {
  const Scene scene(picture, size);
  gpu::Recording before, measured;
  scene.analyse(before);
  scene.execute(before);
  record(scene, measured);
  for (auto _ : state)
    scene.execute(measured);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(scene.frameBytes()));
}

struct Kernel {
  const char* name;
  Record record;
};

constexpr Kernel measuredKernels[] = {
    {"memcpy", [](const Scene& scene, gpu::Recording& to) { scene.copyFrame(to); }},
    {"falseColorSkin",
     [](const Scene& scene, gpu::Recording& to) { scene.falseColor(to, MetalProcessor::Mode::skin); }},
    {"falseColorExposure",
     [](const Scene& scene, gpu::Recording& to) { scene.falseColor(to, MetalProcessor::Mode::exposure); }},
    {"clearCounters", [](const Scene& scene, gpu::Recording& to) { scene.clearCounters(to); }},
    {"accumulateScopes", [](const Scene& scene, gpu::Recording& to) { scene.accumulate(to); }},
    {"renderVectorscope", [](const Scene& scene, gpu::Recording& to) { scene.vectorscope(to); }},
    {"renderParade", [](const Scene& scene, gpu::Recording& to) { scene.parade(to); }},
    {"drawAtItsSize", [](const Scene& scene, gpu::Recording& to) { scene.draw(to, 4); }},
    {"drawSmaller", [](const Scene& scene, gpu::Recording& to) { scene.draw(to, 3); }},
    {"previewAndScopes", [](const Scene& scene, gpu::Recording& to) { scene.analyse(to); }},
};

void registerAll() {
  for (const Kernel& kernel : measuredKernels) {
    for (const gpu::Extent size : sizes) {
      for (const benchmarks::Picture picture : benchmarks::allPictures) {
        const std::string name = std::string(kernel.name) + "/" + std::to_string(size.width) + "x" +
                                 std::to_string(size.height) + "/" + benchmarks::nameOf(picture);
        benchmark::RegisterBenchmark(
            name.c_str(),
            [=, record = kernel.record](benchmark::State& state) { measure(state, picture, size, record); })
            ->Unit(benchmark::kMicrosecond)
            ->MeasureProcessCPUTime()
            ->UseRealTime();
      }
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  registerAll();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
