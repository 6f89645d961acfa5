#include "analysis/metal_processor.h"

#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "analysis/kernel_fixture.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Mode = MetalProcessor::Mode;

constexpr Rgb lightSkin{194, 150, 130};
constexpr Rgb yellow{255, 242, 0};

class MetalProcessorTest : public testing::TestWithParam<gpu::test::TestDevice> {
 protected:
  void SetUp() override {
    ASSERT_NE(processor_, nullptr);
    processor_->onPreview = [this] { calls_.push_back("preview"); };
    processor_->onScopes = [this] { calls_.push_back("scopes"); };
  }

  // Waits for the device and for what it queued on the main thread; returns the callbacks since the last
  // time.
  std::vector<std::string> finished() {
    const auto commands = device_->makeCommandQueue()->makeCommandBuffer();
    commands->commit();
    commands->waitUntilCompleted();
    settle();
    return std::exchange(calls_, {});
  }

  std::vector<std::string> ingested(const PixelBufferRef& frame) {
    processor_->ingest(frame);
    return finished();
  }

  std::shared_ptr<gpu::Device> device_ = GetParam().make();
  std::shared_ptr<MetalProcessor> processor_ = MetalProcessor::create(device_);
  std::vector<std::string> calls_;
};

TEST_P(MetalProcessorTest, PublishesThePreviewAndTheFrameOfEveryAnalysis) {
  EXPECT_EQ(processor_->preview(), nullptr);
  EXPECT_THAT(ingested(plainFrame(40, 30, lightSkin)), ElementsAre("preview"));
  EXPECT_EQ(processor_->preview()->pixelFormat(), gpu::PixelFormat::rgba8Unorm);
  EXPECT_EQ(readPixels(processor_->preview()).rgb(39, 29), yellow);
  EXPECT_EQ(readPixels(processor_->frame()).rgb(39, 29), lightSkin);
  EXPECT_EQ(processor_->vectorscope(), nullptr);

  processor_->mode = Mode::exposure;
  EXPECT_THAT(ingested(plainFrame(40, 30, {153, 153, 153})), ElementsAre("preview"));
  EXPECT_EQ(readPixels(processor_->preview()).rgb(0, 0), (Rgb{235, 209, 26}));
}

TEST_P(MetalProcessorTest, ScopesComeOnTheirCadenceAfterThePreview) {
  const auto frame = plainFrame(20, 20, lightSkin);
  std::vector<std::string> calls;
  processor_->scopeDivider = 2;
  EXPECT_THAT(ingested(plainFrame(1, 50, lightSkin)), IsEmpty());  // too small to be counted
  for (int i = 0; i < 4; ++i)
    calls.push_back(testing::PrintToString(ingested(frame).size()));
  EXPECT_THAT(calls, ElementsAre("1", "2", "1", "2"));
  for (const int divider : {1, 0, -3}) {
    processor_->scopeDivider = divider;
    EXPECT_THAT(ingested(frame), ElementsAre("preview", "scopes")) << divider;
  }
  EXPECT_EQ(processor_->vectorscope()->size(), (gpu::Extent{512, 512}));
  EXPECT_EQ(processor_->parade()->size(), (gpu::Extent{780, 256}));
}

TEST_P(MetalProcessorTest, ScopesShowTheCapturedPixelsOnly) {
  processor_->scopeDivider = 1;
  ingested(plainFrame(64, 64, {255, 0, 0}));
  EXPECT_NE(readPixels(processor_->vectorscope()).rgb(2 * 98, 0), (Rgb{0, 0, 0}));
  EXPECT_NE(readPixels(processor_->parade()).rgb(0, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(readPixels(processor_->parade()).rgb(262, 0), (Rgb{0, 0, 0}));
  // The counters start anew with every frame.
  ingested(plainFrame(64, 64, {0, 0, 0}));
  EXPECT_EQ(readPixels(processor_->vectorscope()).rgb(2 * 98, 0), (Rgb{0, 0, 0}));
}

TEST_P(MetalProcessorTest, WithoutAPreviewTheScopesGoOn) {
  const auto frame = plainFrame(20, 20, lightSkin);
  processor_->scopeDivider = 1;
  ingested(frame);
  processor_->mode = Mode::original;
  EXPECT_THAT(ingested(frame), ElementsAre("preview", "scopes"));
  EXPECT_EQ(processor_->preview(), nullptr);
  EXPECT_NE(processor_->frame(), nullptr);
  processor_->mode = Mode::skin;
  processor_->previewEnabled = false;
  EXPECT_THAT(ingested(frame), ElementsAre("preview", "scopes"));
  EXPECT_EQ(processor_->preview(), nullptr);
  processor_->previewEnabled = true;
  processor_->reanalyze();
  EXPECT_THAT(finished(), ElementsAre("preview", "scopes"));
  EXPECT_NE(processor_->preview(), nullptr);
}

TEST_P(MetalProcessorTest, AFrameOfAnotherSizeReplacesTheTextures) {
  ingested(plainFrame(40, 30, lightSkin));
  const auto frame = processor_->frame();
  const auto preview = processor_->preview();
  ingested(plainFrame(40, 30, lightSkin));
  EXPECT_EQ(processor_->frame(), frame);
  EXPECT_EQ(processor_->preview(), preview);
  ingested(plainFrame(30, 40, {0, 0, 0}));
  EXPECT_EQ(processor_->preview()->size(), (gpu::Extent{30, 40}));
  EXPECT_EQ(processor_->frame()->size(), (gpu::Extent{30, 40}));
  EXPECT_EQ(frame->size(), (gpu::Extent{40, 30}));
  EXPECT_EQ(readPixels(frame).rgb(0, 0), lightSkin);
}

TEST_P(MetalProcessorTest, AChangeOfColoursShowsOnTheLastFrame) {
  Palette palette;
  palette.skinOn = {0, 0, 1};
  processor_->setPalette(palette.buffer());
  processor_->reanalyze();
  EXPECT_THAT(finished(), IsEmpty());
  ingested(plainFrame(20, 20, lightSkin));
  EXPECT_EQ(readPixels(processor_->preview()).rgb(0, 0), (Rgb{0, 0, 255}));
  processor_->setPalette(Palette::standard().buffer());
  EXPECT_THAT(finished(), ElementsAre("preview", "scopes"));
  EXPECT_EQ(readPixels(processor_->preview()).rgb(0, 0), yellow);
}

TEST_P(MetalProcessorTest, ResetForgetsEverythingEvenWhatIsUnderWay) {
  processor_->scopeDivider = 2;
  ingested(plainFrame(20, 20, lightSkin));
  processor_->reanalyze();
  processor_->ingest(plainFrame(1000, 1000, lightSkin));
  processor_->reset();
  EXPECT_THAT(finished(), testing::Contains("scopes"));
  EXPECT_EQ(processor_->preview(), nullptr);
  EXPECT_EQ(processor_->vectorscope(), nullptr);
  EXPECT_EQ(processor_->parade(), nullptr);
  EXPECT_EQ(processor_->frame(), nullptr);
  processor_->reset();
  EXPECT_THAT(finished(), ElementsAre("preview", "scopes"));
  processor_->reanalyze();
  EXPECT_THAT(finished(), IsEmpty());
  // The count starts anew.
  EXPECT_THAT(ingested(plainFrame(20, 20, lightSkin)), ElementsAre("preview"));
}

TEST_P(MetalProcessorTest, MayEndWhileWorkIsUnderWay) {
  std::weak_ptr<PixelBuffer> lastFrame;
  for (int round = 0; round < 20; ++round) {
    std::thread capture([processor = processor_, &lastFrame] {
      for (int i = 0; i < 3; ++i) {
        const auto frame = plainFrame(300, 200, lightSkin);
        processor->ingest(frame);
        lastFrame = frame;
      }
    });
    processor_->mode = Mode::exposure;
    processor_->reanalyze();
    capture.join();
    const std::weak_ptr<MetalProcessor> ended = processor_;
    processor_ = nullptr;
    EXPECT_THAT(finished(), IsEmpty());
    EXPECT_TRUE(ended.expired());
    EXPECT_TRUE(lastFrame.expired());
    processor_ = MetalProcessor::create(device_);
    SetUp();
  }
}

TEST(MetalProcessor, SamplesAtMostAQuarterMillionPixels) {
  EXPECT_EQ(MetalProcessor::sampleStride(500, 500), 1);
  EXPECT_EQ(MetalProcessor::sampleStride(501, 500), 2);
  EXPECT_EQ(MetalProcessor::sampleStride(1000, 1000), 2);
  EXPECT_EQ(MetalProcessor::sampleStride(1920, 1080), 3);
  EXPECT_EQ(MetalProcessor::sampleStride(3840, 2160), 6);
  EXPECT_EQ(MetalProcessor::sampleStride(100000, 100000), 200);
}

INSTANTIATE_TEST_SUITE_P(Devices, MetalProcessorTest, testing::ValuesIn(gpu::test::allDevices()),
                         gpu::test::deviceName);

}  // namespace
}  // namespace velicor::test
