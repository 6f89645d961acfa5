// What the processor does when its device is lost and comes back.
#include <gmock/gmock.h>

#include "analysis/kernel_fixture.h"
#include "analysis/metal_processor.h"
#include "platform/gpu/vulkan/faulty_loader.h"
#include "support/log_recorder.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

constexpr Rgb lightSkin{194, 150, 130};
constexpr Rgb yellow{255, 242, 0};
constexpr Rgb orange{237, 197, 24};  // the same in the heatmap

struct Faults {
  gpu::test::FaultyLoader loader;
  LogRecorder log;
};

class ProcessorLossTest : public testing::Test, protected Faults {
 protected:
  void SetUp() override {
    processor_->scopeDivider = 1;
    processor_->onPreview = [this] { announced_.push_back(colorOf(processor_->preview())); };
    processor_->ingest(plainFrame(40, 30, lightSkin));
    ASSERT_TRUE(waitUntil([&] { return !announced_.empty(); }));
  }

  std::shared_ptr<gpu::Device> makeDevice() {
    gpu::VulkanOptions options;
    options.entryPoint = loader.entryPoint();
    options.rebuildPause = std::chrono::milliseconds(1);
    return gpu::test::makeCheckedVulkanDevice(options);
  }

  // By work that has nothing to do with the processor, such as a view's.
  void loseDevice(std::atomic<int>& failure) {
    const auto commands = device_->makeCommandQueue()->makeCommandBuffer();
    failure = 1;
    commands->commit();
    commands->waitUntilCompleted();
    ASSERT_EQ(commands->status(), gpu::CommandBuffer::Status::failed);
  }

  static Rgb colorOf(const std::shared_ptr<gpu::Texture>& texture) {
    return texture ? readPixels(texture).rgb(0, 0) : Rgb{};
  }

  std::shared_ptr<gpu::Device> device_ = makeDevice();
  std::shared_ptr<MetalProcessor> processor_ = MetalProcessor::create(device_);
  std::vector<Rgb> announced_;
};

TEST_F(ProcessorLossTest, WhoeverMeetsTheLossTheLastFrameIsAnalysedAgain) {
  for (std::atomic<int>* failure : {&loader.lostSubmits, &loader.lostWaits}) {
    announced_.clear();
    loader.refusedDevices = 2;  // it does not come back at once
    loseDevice(*failure);
    EXPECT_EQ(processor_->preview(), nullptr);
    EXPECT_EQ(processor_->parade(), nullptr);
    EXPECT_EQ(processor_->frame(), nullptr);
    // No frame comes, and nobody asks.
    ASSERT_TRUE(waitUntil([&] { return processor_->parade() != nullptr; }));
    EXPECT_EQ(colorOf(processor_->preview()), yellow);
    EXPECT_EQ(colorOf(processor_->frame()), lightSkin);
    EXPECT_NE(readPixels(processor_->parade()).rgb(0, 255 - 194), Rgb());
    settle();
    EXPECT_THAT(announced_, testing::Each(yellow)) << "never an empty picture";
  }
}

TEST_F(ProcessorLossTest, WhatIsAskedForMeanwhileIsAboutTheFrameAndNeverAboutBlankMemory) {
  loader.refusedDevices = 1;
  processor_->ingest(plainFrame(40, 30, lightSkin));  // its announcement comes when there is nothing to show
  loseDevice(loader.lostSubmits);
  announced_.clear();
  processor_->mode = MetalProcessor::Mode::exposure;
  ASSERT_TRUE(waitUntil([&] {
    processor_->reanalyze();
    return processor_->preview() != nullptr;
  }));
  EXPECT_EQ(colorOf(processor_->preview()), orange);
  EXPECT_THAT(announced_, testing::Each(orange));

  loader.refusedDevices = 1;
  loseDevice(loader.lostWaits);
  processor_->reset();
  ASSERT_TRUE(waitUntil([&] { return device_->makeCommandQueue()->makeCommandBuffer() != nullptr; }));
  settle();
  EXPECT_EQ(processor_->preview(), nullptr) << "a frame that is forgotten does not come back";
}

}  // namespace
}  // namespace velicor::test
