// What the processor does when a device refuses something.
#include <functional>
#include <set>

#include <gmock/gmock.h>

#include "analysis/kernel_fixture.h"
#include "analysis/metal_processor.h"
#include "platform/gpu/native/native_device.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

// Refuses what it is told to.
class FaultyDevice : public gpu::NativeDevice {
 public:
  using Device::Work;
  std::set<Work> refused;
  std::function<bool(const gpu::TextureDescriptor&)> refusesTexture = [](const auto&) { return false; };
  int buffersLeft = 2;
  bool refusesPipelines = false;
  bool refusesCache = false;
  int commits = 0;

 protected:
  bool accepts(Work work) override { return !refused.contains(work); }
  std::shared_ptr<gpu::Buffer> onMakeBuffer(std::size_t length, gpu::StorageMode storageMode) override {
    return buffersLeft-- > 0 ? NativeDevice::onMakeBuffer(length, storageMode) : nullptr;
  }
  std::shared_ptr<gpu::Texture> onMakeTexture(const gpu::TextureDescriptor& descriptor) override {
    return refusesTexture(descriptor) ? nullptr : NativeDevice::onMakeTexture(descriptor);
  }
  std::shared_ptr<gpu::ComputePipeline> onMakeComputePipeline(const gpu::Function& function) override {
    return refusesPipelines ? nullptr : NativeDevice::onMakeComputePipeline(function);
  }
  std::shared_ptr<gpu::TextureCache> onMakeTextureCache() override {
    return refusesCache ? nullptr : NativeDevice::onMakeTextureCache();
  }
  void onSubmit(gpu::Submission submission) override {
    ++commits;
    NativeDevice::onSubmit(std::move(submission));
  }
};

class ProcessorFailureTest : public testing::Test {
 protected:
  void create() {
    processor_ = MetalProcessor::create(device_);
    if (!processor_) return;
    processor_->scopeDivider = 1;
    processor_->onPreview = [this] { ++previews_; };
  }

  // Previews announced for one more frame.
  int ingested(const PixelBufferRef& frame) {
    device_->commits = 0;
    previews_ = 0;
    processor_->ingest(frame);
    const int expected = device_->commits;
    EXPECT_TRUE(waitUntil([&] { return previews_ >= expected; }));
    return previews_;
  }

  std::shared_ptr<FaultyDevice> device_ = std::make_shared<FaultyDevice>();
  std::shared_ptr<MetalProcessor> processor_;
  int previews_ = 0;
};

TEST_F(ProcessorFailureTest, NoProcessorWhereSomethingIsMissing) {
  EXPECT_EQ(MetalProcessor::create(nullptr), nullptr);
  const std::function<void(FaultyDevice&)> faults[] = {
      [](FaultyDevice& device) { device.refused = {FaultyDevice::Work::commandQueue}; },
      [](FaultyDevice& device) { device.refusesPipelines = true; },
      [](FaultyDevice& device) { device.buffersLeft = 0; },
      [](FaultyDevice& device) { device.buffersLeft = 1; },
      [](FaultyDevice& device) { device.refusesTexture = [](const auto& t) { return t.width == 512; }; },
      [](FaultyDevice& device) { device.refusesTexture = [](const auto& t) { return t.width == 780; }; },
      [](FaultyDevice& device) { device.refusesCache = true; },
  };
  for (const auto& fault : faults) {
    device_ = std::make_shared<FaultyDevice>();
    fault(*device_);
    EXPECT_EQ(MetalProcessor::create(device_), nullptr);
  }
  device_ = std::make_shared<FaultyDevice>();
  EXPECT_NE(MetalProcessor::create(device_), nullptr);
}

TEST_F(ProcessorFailureTest, AFrameThatCannotBeHeldIsDroppedAndTheResultsStay) {
  create();
  ASSERT_EQ(ingested(plainFrame(20, 20, {194, 150, 130})), 1);
  const auto preview = processor_->preview();
  device_->refused = {FaultyDevice::Work::commandBuffer};
  EXPECT_EQ(ingested(plainFrame(20, 20, {0, 0, 0})), 0);
  device_->refused = {};
  device_->refusesTexture = [](const auto& t) { return t.pixelFormat == gpu::PixelFormat::bgra8Unorm; };
  EXPECT_EQ(ingested(plainFrame(30, 20, {0, 0, 0})), 0);
  EXPECT_EQ(processor_->preview(), preview);
  device_->refusesTexture = [](const auto&) { return false; };
  EXPECT_EQ(readPixels(preview).rgb(0, 0), (Rgb{255, 242, 0}));
  EXPECT_EQ(ingested(plainFrame(30, 20, {0, 0, 0})), 1);
}

TEST_F(ProcessorFailureTest, WithoutMemoryForThePreviewTheScopesGoOn) {
  create();
  device_->refusesTexture = [](const auto& t) {
    return t.width == 20 && t.pixelFormat == gpu::PixelFormat::rgba8Unorm;
  };
  EXPECT_EQ(ingested(plainFrame(20, 20, {255, 255, 255})), 1);
  EXPECT_EQ(processor_->preview(), nullptr);
  ASSERT_NE(processor_->parade(), nullptr);
  device_->refusesTexture = [](const auto&) { return false; };
  EXPECT_NE(readPixels(processor_->parade()).rgb(0, 0), (Rgb{0, 0, 0}));
}

}  // namespace
}  // namespace velicor::test
