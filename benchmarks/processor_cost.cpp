#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "analysis/metal_processor.h"
#include "platform/dispatch/main_queue.h"
#include "platform/gpu/native/native_device.h"
#include "support/pictures.h"

// What the analysis of a frame costs without a graphics processor: preview and both scopes, from the frame's
// arrival to the published pictures. "CPU" is processor time of all threads.
namespace {

using namespace velicor;
using benchmarks::Picture;
using Mode = MetalProcessor::Mode;

void analyse(benchmark::State& state, Mode mode, Picture picture, gpu::Extent size) {
  const auto device = gpu::makeNativeDevice();
  const auto queue = device->makeCommandQueue();
  const auto processor = MetalProcessor::create(device);
  processor->mode = mode;
  processor->scopeDivider = 1;
  const PixelBufferRef frame = benchmarks::makePicture(picture, size.width, size.height);
  for (const auto& iteration : state) {
    static_cast<void>(iteration);
    processor->ingest(frame);
    const auto last = queue->makeCommandBuffer();
    last->commit();
    last->waitUntilCompleted();
    dispatch::MainQueue::shared().runPending();
  }
  state.SetBytesProcessed(state.iterations() * size.width * size.height *
                          static_cast<std::int64_t>(gpu::bytesPerPixel));
}

void registerAll() {
  for (const gpu::Extent size : {gpu::Extent{640, 400}, gpu::Extent{1920, 1080}}) {
    for (const auto& [mode, modeName] :
         {std::pair(Mode::skin, "skin"), std::pair(Mode::exposure, "exposure")}) {
      for (const Picture picture : benchmarks::allPictures) {
        const std::string name = std::to_string(size.width) + "x" + std::to_string(size.height) + "/" +
                                 modeName + "/" + std::string(nameOf(picture));
        benchmark::RegisterBenchmark(name.c_str(), analyse, mode, picture, size)
            ->MeasureProcessCPUTime()
            ->UseRealTime()
            ->Unit(benchmark::kMicrosecond);
      }
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  registerAll();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
