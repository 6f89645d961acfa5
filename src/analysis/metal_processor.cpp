#include "analysis/metal_processor.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "analysis/kernels/default_library.h"
#include "analysis/kernels/kernel_interface.h"
#include "diagnostics/debug_dump.h"
#include "platform/dispatch/main_queue.h"
#include "platform/dispatch/serial_queue.h"

namespace velicor {

namespace {

constexpr double maxSamples = 250000;
constexpr int minFrameSide = 2;
constexpr int dumpedFrame = 60;

// A picture that kernels write and views read.
std::shared_ptr<gpu::Texture> makePicture(gpu::Device& device, gpu::Extent size) {
  return device.makeTexture({gpu::PixelFormat::rgba8Unorm, size.width, size.height,
                             gpu::TextureUsage::shaderRead | gpu::TextureUsage::shaderWrite,
                             gpu::StorageMode::deviceOnly});
}

}  // namespace

std::optional<MetalProcessor::Mode> MetalProcessor::modeFrom(int rawValue) {
  for (const Mode mode : allModes) {
    if (id(mode) == rawValue) return mode;
  }
  return std::nullopt;
}

std::shared_ptr<MetalProcessor> MetalProcessor::create(std::shared_ptr<gpu::Device> device) {
  if (!device) return nullptr;
  std::shared_ptr<MetalProcessor> processor(new MetalProcessor(std::move(device)));
  if (!processor->prepare()) return nullptr;
  processor->watchDevice();
  return processor;
}

void MetalProcessor::watchDevice() {
  deviceReturns_ = device_->watchReturns([weak = weak_from_this()] {
    dispatch::MainQueue::shared().async([weak] {
      if (const auto self = weak.lock()) self->deviceReturned();
    });
  });
}

bool MetalProcessor::prepare() {
  queue_ = device_->makeCommandQueue();
  if (!queue_ || !buildPipelines()) return false;
  vsBuffer_ = device_->makeBuffer(kernels::vectorscopeBytes, gpu::StorageMode::deviceOnly);
  paradeBuffer_ = device_->makeBuffer(kernels::paradeBytes, gpu::StorageMode::deviceOnly);
  vsTexture_ = makePicture(*device_, {kernels::vectorscopeSide, kernels::vectorscopeSide});
  paradeTexture_ = makePicture(*device_, {kernels::paradeWidth, kernels::paradeHeight});
  if (!vsBuffer_ || !paradeBuffer_ || !vsTexture_ || !paradeTexture_) return false;
  textureCache_ = device_->makeTextureCache();
  return textureCache_ != nullptr;
}

bool MetalProcessor::buildPipelines() {
  const auto library = defaultLibrary(device_);
  if (!library) return false;
  const auto build = [&](const char* name) {
    const auto function = library->function(name);
    return function ? device_->makeComputePipeline(function) : nullptr;
  };
  pipelines_ = {build("falseColor"), build("accumulateScopes"), build("renderVectorscope"),
                build("renderParade")};
  return pipelines_.falseColor && pipelines_.accumulate && pipelines_.vsRender && pipelines_.paradeRender;
}

void MetalProcessor::ingest(const PixelBufferRef& frame) {
  const int width = frame->width();
  const int height = frame->height();
  if (width < minFrameSide || height < minFrameSide) return;
  const std::scoped_lock guard(gpuLock_);
  lastFrame_ = frame;
  const auto commands = queue_->makeCommandBuffer();
  if (!commands || !upload(*commands)) return;
  ++ingestCount_;
  encodeAnalysis(*commands, ingestCount_ % std::max(1, scopeDivider.load()) == 0);
  commands->commit();
  if (ingestCount_ == dumpedFrame && std::getenv("VELICOR_DUMP")) dumpPictures();
}

bool MetalProcessor::upload(gpu::CommandBuffer& commands) {
  const gpu::Extent size{lastFrame_->width(), lastFrame_->height()};
  const auto wrapped =
      textureCache_->texture(lastFrame_, gpu::PixelFormat::bgra8Unorm, size.width, size.height);
  if (!wrapped) return false;
  textureCache_->flush();
  prepareRegionTexture(size);
  if (!regionTexture_) return false;
  encodeUpload(commands, wrapped);
  commands.addCompletedHandler([wrapped](const gpu::CommandBuffer&) { /* kept until here */ });
  regionUpload_ = ++uploads_;
  regionLossCount_ = commands.lossCount();
  return true;
}

void MetalProcessor::prepareRegionTexture(gpu::Extent size) {
  if (regionTexture_ && regionTexture_->size() == size) return;
  regionTexture_ = device_->makeTexture({gpu::PixelFormat::bgra8Unorm, size.width, size.height,
                                         gpu::TextureUsage::shaderRead, gpu::StorageMode::deviceOnly});
  regionUpload_ = 0;
}

void MetalProcessor::noteLost(std::uint64_t upload) {
  std::uint64_t last = lostUploads_;
  while (last < upload && !lostUploads_.compare_exchange_weak(last, upload)) {
  }
}

void MetalProcessor::setPalette(const Palette::Buffer& palette) {
  {
    const std::scoped_lock guard(gpuLock_);
    palette_ = palette;
  }
  reanalyze();
}

void MetalProcessor::reanalyze() { analyzeAgain(); }

bool MetalProcessor::analyzeAgain() {
  const std::scoped_lock guard(gpuLock_);
  if (!lastFrame_) return false;
  if (joinsReanalysis()) return true;
  const auto commands = queue_->makeCommandBuffer();
  if (!commands) return false;
  const bool isThere = regionUpload_ > lostUploads_ && regionLossCount_ == commands->lossCount();
  if (!isThere && !upload(*commands)) return false;
  encodeAnalysis(*commands, true);
  commands->addCompletedHandler([weak = weak_from_this()](const gpu::CommandBuffer&) {
    if (const auto self = weak.lock()) self->reanalysisDone();
  });
  reanalysis_ = Reanalysis::running;
  commands->commit();
  return true;
}

// Whether one under way takes this call along.
bool MetalProcessor::joinsReanalysis() {
  auto seen = Reanalysis::running;
  return reanalysis_.compare_exchange_strong(seen, Reanalysis::followed) || seen == Reanalysis::followed;
}

void MetalProcessor::reanalysisDone() {
  if (reanalysis_.exchange(Reanalysis::none) != Reanalysis::followed) return;
  dispatch::MainQueue::shared().async([weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->reanalyze();
  });
}

// The views keep what they show until there is a new result: it was right when it was drawn.
void MetalProcessor::deviceReturned() {
  if (analyzeAgain()) return;
  forgetResults();
  announceLater(true);
}

void MetalProcessor::forgetResults() {
  const std::scoped_lock guard(lock_);
  results_ = {};
  results_.lossCount = device_->lossCount();
}

void MetalProcessor::reset() {
  {
    const std::scoped_lock guard(gpuLock_);
    lastFrame_ = nullptr;
    regionTexture_ = nullptr;
    regionUpload_ = 0;
    outTexture_ = nullptr;
    // The one before may keep memory of the frames.
    if (auto cache = device_->makeTextureCache()) textureCache_ = std::move(cache);
    ingestCount_ = 0;
    ++session_;
  }
  forgetResults();
  announceLater(true);
}

void MetalProcessor::encodeAnalysis(gpu::CommandBuffer& commands, bool includeScopes) {
  if (!regionTexture_) return;
  const Mode previewMode = mode;
  const bool wantsPreview = previewMode != Mode::original && previewEnabled;
  if (wantsPreview) {
    if (!outTexture_ || outTexture_->size() != regionTexture_->size()) {
      outTexture_ = makePicture(*device_, regionTexture_->size());
    }
    if (outTexture_) encodePreview(commands, previewMode);
  }
  if (includeScopes) encodeScopes(commands);
  const Outcome outcome{wantsPreview ? outTexture_ : nullptr, regionTexture_, includeScopes, session_,
                        regionUpload_};
  commands.addCompletedHandler([weak = weak_from_this(), outcome](const gpu::CommandBuffer& done) {
    const auto self = weak.lock();
    if (!self) return;
    const bool failed = done.status() == gpu::CommandBuffer::Status::failed;
    if (failed) self->noteLost(outcome.source);
    // The results of the frame before stay.
    if (outcome.source > self->lostUploads_) self->publish(outcome, done.lossCount());
  });
}

void MetalProcessor::publish(const Outcome& outcome, std::uint64_t lossCount) {
  {
    const std::scoped_lock guard(lock_);
    if (outcome.session == session_) {
      if (results_.lossCount != lossCount) results_ = {};
      results_.lossCount = lossCount;
      results_.preview = outcome.preview;
      results_.frame = outcome.frame;
      if (outcome.includesScopes) {
        results_.vectorscope = vsTexture_;
        results_.parade = paradeTexture_;
      }
    }
  }
  announceLater(outcome.includesScopes);
}

void MetalProcessor::announceLater(bool includesScopes) {
  dispatch::MainQueue::shared().async([weak = weak_from_this(), includesScopes] {
    const auto self = weak.lock();
    // After a loss there is nothing to show until the device is back, which announces what there is then.
    if (!self || self->hasLostResults()) return;
    if (self->onPreview) self->onPreview();
    if (includesScopes && self->onScopes) self->onScopes();
  });
}

void MetalProcessor::dumpPictures() {
  dispatch::backgroundQueue().async(
      [queue = queue_, loupe = outTexture_, vectorscope = vsTexture_, parade = paradeTexture_] {
        if (loupe) DebugDump::write(loupe, queue, "loupe");
        DebugDump::write(vectorscope, queue, "vectorscope");
        DebugDump::write(parade, queue, "parade");
      });
}

bool MetalProcessor::hasLostResults() const {
  const std::scoped_lock guard(lock_);
  return results_.lossCount != device_->lossCount();
}

std::shared_ptr<gpu::Texture> MetalProcessor::published(
    std::shared_ptr<gpu::Texture> Results::*result) const {
  const std::scoped_lock guard(lock_);
  return results_.lossCount == device_->lossCount() ? results_.*result : nullptr;
}

std::shared_ptr<gpu::Texture> MetalProcessor::preview() const { return published(&Results::preview); }
std::shared_ptr<gpu::Texture> MetalProcessor::vectorscope() const { return published(&Results::vectorscope); }
std::shared_ptr<gpu::Texture> MetalProcessor::parade() const { return published(&Results::parade); }
std::shared_ptr<gpu::Texture> MetalProcessor::frame() const { return published(&Results::frame); }

int MetalProcessor::sampleStride(int width, int height) {
  const double pixels = static_cast<double>(width) * height;
  if (pixels <= maxSamples) return 1;
  return std::max(1, static_cast<int>(std::ceil(std::sqrt(pixels / maxSamples))));
}

}  // namespace velicor
