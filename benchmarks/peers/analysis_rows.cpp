#include <ctime>

#include <fstream>
#include <map>

#include <QTemporaryDir>

#include "analysis/metal_processor.h"
#include "peers/ffmpeg.h"
#include "peers/rows.h"
#include "platform/dispatch/main_queue.h"
#include "platform/gpu/native/native_device.h"
#include "support/brief.h"
#include "support/pictures.h"

namespace velicor::benchmarks {

namespace {

using Mode = MetalProcessor::Mode;

const int rounds = unlessBrief(3, 1);

double ownCpuSeconds() {
  timespec used{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

// Ours: as the program does it, but with scopes of every frame.
class Analysis {
 public:
  Analysis() { processor_->scopeDivider = 1; }

  // Processor time a frame, seconds.
  double cost(const PixelBufferRef& frame, Mode mode, int frames) {
    processor_->mode = mode;
    analyse(frame);
    const double before = ownCpuSeconds();
    for (int i = 0; i < frames; ++i)
      analyse(frame);
    return (ownCpuSeconds() - before) / frames;
  }

 private:
  void analyse(const PixelBufferRef& frame) {
    processor_->ingest(frame);
    const auto last = queue_->makeCommandBuffer();
    last->commit();
    last->waitUntilCompleted();
    dispatch::MainQueue::shared().runPending();
  }

  std::shared_ptr<gpu::Device> device_ = gpu::makeNativeDevice();
  std::shared_ptr<gpu::CommandQueue> queue_ = device_->makeCommandQueue();
  std::shared_ptr<MetalProcessor> processor_ = MetalProcessor::create(device_);
};

// Theirs: the same frame from a file, over and over.
class Peer {
 public:
  explicit Peer(const PixelBufferRef& frame)
      : size_(sizeText(*frame)), file_(folder_.filePath("frame").toStdString()) {
    std::ofstream out(file_, std::ios::binary);
    for (int y = 0; y < frame->height(); ++y) {
      const auto row = frame->row(y);
      out.write(reinterpret_cast<const char*>(row.data()), static_cast<std::streamsize>(row.size()));
    }
  }

  // Processor time a frame beyond that of reading it, seconds.
  double cost(int frames) const {
    std::vector<std::string> reading{
        "-stream_loop", std::to_string(frames - 1), "-f", "rawvideo", "-pix_fmt", "bgra", "-s", size_, "-i",
        file_};
    std::vector<std::string> analysing = reading;
    reading.insert(reading.end(), {"-f", "null", "-"});
    analysing.insert(analysing.end(), {"-filter_complex", ffmpegGraph});
    for (const char* result : {"[v]", "[w]", "[p]"})
      analysing.insert(analysing.end(), {"-map", result, "-f", "null", "-"});
    return (cpuOfFfmpeg(analysing) - cpuOfFfmpeg(reading)) / frames;
  }

 private:
  static std::string sizeText(const PixelBuffer& frame) {
    return std::to_string(frame.width()) + "x" + std::to_string(frame.height());
  }

  QTemporaryDir folder_;
  std::string size_;
  std::string file_;
};

struct Costs {
  double ours = 0;  // the dearer of the two modes
  double theirs = 0;
};

Costs costsOf(Analysis& analysis, Picture picture, gpu::Extent size, int frames) {
  const PixelBufferRef frame = makePicture(picture, size.width, size.height);
  const Peer peer(frame);
  std::vector<double> skin, exposure, theirs;
  for (int round = 0; round < rounds; ++round) {
    theirs.push_back(peer.cost(frames));
    skin.push_back(analysis.cost(frame, Mode::skin, frames));
    exposure.push_back(analysis.cost(frame, Mode::exposure, frames));
  }
  return {std::max(median(skin), median(exposure)), median(theirs)};
}

void addRow(Table& table, gpu::Extent size, int frames, double aim) {
  Analysis analysis;
  std::vector<double> ours, theirs, ratios;
  std::string each;
  for (const Picture picture : allPictures) {
    const Costs costs = costsOf(analysis, picture, size, frames);
    ours.push_back(costs.ours * 1e3);
    theirs.push_back(costs.theirs * 1e3);
    ratios.push_back(costs.theirs / costs.ours);
    each += (each.empty() ? "" : ", ") + std::string(nameOf(picture)) + " " + rounded(ratios.back(), 1);
  }
  const double least = *std::min_element(ratios.begin(), ratios.end());
  table.atLeast(
      "preview and both scopes, processor time a frame, beside one ffmpeg graph, " +
          std::to_string(size.width) + " × " + std::to_string(size.height),
      aim, " times less", least,
      each + " times less (ours " + rangeOf(ours, 2) + " ms, ffmpeg " + rangeOf(theirs, 1) + " ms)");
}

}  // namespace

void addAnalysisRows(Table& table) {
  addRow(table, {1920, 1080}, 40, 20);
  addRow(table, {640, 400}, 300, 12);
}

}  // namespace velicor::benchmarks
