// What happens when the driver fails while running.
#include <gmock/gmock.h>

#include "platform/gpu/device_fixture.h"
#include "platform/gpu/vulkan/faulty_loader.h"
#include "support/log_recorder.h"
#include "support/main_loop.h"

namespace velicor::gpu::test {
namespace {

using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::Not;
using velicor::test::waitUntil;

struct Faults {
  FaultyLoader loader;
  velicor::test::LogRecorder log;
};

class VulkanLossTest : public testing::Test, protected Faults, protected Workbench {
 protected:
  VulkanLossTest() : Workbench(makeCheckedVulkanDevice(options())) {}
  VulkanOptions options() {
    VulkanOptions options;
    options.entryPoint = loader.entryPoint();
    options.rebuildPause = std::chrono::milliseconds(0);
    return options;
  }

  CommandBuffer::Status statusOf(const std::shared_ptr<CommandBuffer>& commands) {
    commands->commit();
    commands->waitUntilCompleted();
    return commands->status();
  }

  std::shared_ptr<Buffer> number_ = device_->makeBuffer(4, StorageMode::shared);
};

TEST_F(VulkanLossTest, ALostDeviceIsRebuiltBehindTheSameDevice) {
  const auto picture = texture(5, 3, StorageMode::deviceOnly, PixelFormat::bgra8Unorm);
  const auto clear = queue_->makeCommandBuffer();
  clear->makeRenderEncoder({picture, {1, 1, 1, 1}})->endEncoding();
  EXPECT_EQ(statusOf(clear), CommandBuffer::Status::completed);
  const auto addOne = pipeline("addOne");
  for (std::atomic<int>* failure : {&loader.lostSubmits, &loader.lostWaits}) {
    std::vector<int> order;
    std::vector<std::shared_ptr<CommandBuffer>> committed;
    for (int i = 0; i < 6; ++i) {
      committed.push_back(numberWork(*queue_, "addOne", number_));
      committed.back()->addCompletedHandler([&order, i](const CommandBuffer&) { order.push_back(i); });
    }
    *failure = 1;
    for (const auto& commands : committed)
      commands->commit();
    committed.back()->waitUntilCompleted();
    EXPECT_THAT(order, testing::ElementsAre(0, 1, 2, 3, 4, 5));
    EXPECT_EQ(committed.front()->status(), CommandBuffer::Status::failed);

    ASSERT_TRUE(waitUntil([&] { return queue_->makeCommandBuffer() != nullptr; }));
    numberIn(*number_) = 41;
    const auto again = queue_->makeCommandBuffer();
    const auto encoder = again->makeComputeEncoder();
    encoder->setPipeline(addOne);
    encoder->setBuffer(number_, 0, 0);
    encoder->dispatchThreadgroups({}, {});
    encoder->endEncoding();
    EXPECT_EQ(statusOf(again), CommandBuffer::Status::completed);
    EXPECT_EQ(numberIn(*number_), 42U);
    EXPECT_THAT(pixelsOf(picture), Each(0));
  }
  EXPECT_THAT(log.lines(), Contains(HasSubstr("was lost")));
}

TEST_F(VulkanLossTest, ADeviceThatCannotBeRebuiltRefusesWorkUntilItCan) {
  loader.refusedDevices = 2;
  loader.lostSubmits = 1;
  EXPECT_EQ(statusOf(numberWork(*queue_, "addOne", number_)), CommandBuffer::Status::failed);
  ASSERT_TRUE(waitUntil([&] { return queue_->makeCommandBuffer() != nullptr; }));
  EXPECT_EQ(statusOf(numberWork(*queue_, "addOne", number_)), CommandBuffer::Status::completed);
  EXPECT_THAT(log.lines(), Contains(HasSubstr("the analysis pauses")));
}

TEST_F(VulkanLossTest, FramesAreTakenAgainAndWhatWasLostIsLeftAlone) {
  const auto frame = std::make_shared<PixelBuffer>(700, 500);
  const auto cache = device_->makeTextureCache();
  const auto wrapped = [&] { return cache->texture(frame, PixelFormat::bgra8Unorm, 700, 500); };
  loader.lostWaits = 1;
  loader.refusedDevices = 1;
  EXPECT_EQ(statusOf(numberWork(*queue_, "addOne", device_->makeBuffer(4, StorageMode::shared))),
            CommandBuffer::Status::failed);
  ASSERT_TRUE(waitUntil([&] { return wrapped() != nullptr; }));

  // Taken back is what was recorded for this one, and not for the one before: its buffer is gone.
  loader.refusedCommandPools = 1;
  EXPECT_EQ(statusOf(numberWork(*queue_, "addOne", number_)), CommandBuffer::Status::failed);
  EXPECT_EQ(statusOf(numberWork(*queue_, "addOne", number_)), CommandBuffer::Status::completed);
}

TEST_F(VulkanLossTest, WhatThereIsNoMemoryForIsNothingAndTheRestGoesOn) {
  loader.refusedAllocations = 100;
  EXPECT_EQ(device_->makeBuffer(1 << 20, StorageMode::deviceOnly), nullptr);
  EXPECT_EQ(texture(512, 512), nullptr);
  const auto frame = std::make_shared<PixelBuffer>(700, 500);
  EXPECT_EQ(device_->makeTextureCache()->texture(frame, PixelFormat::bgra8Unorm, 700, 500), nullptr);
  EXPECT_EQ(device_->makeDrawables()->next(700, 500), nullptr);
  loader.refusedAllocations = 0;
  numberIn(*number_) = 1;
  EXPECT_EQ(statusOf(numberWork(*queue_, "twice", number_)), CommandBuffer::Status::completed);
  EXPECT_EQ(numberIn(*number_), 2U);

  // In the middle of a submission: it fails as a whole, the next is right again.
  auto wrapped = device_->makeTextureCache()->texture(frame, PixelFormat::bgra8Unorm, 700, 500);
  const auto target = texture(700, 500, StorageMode::deviceOnly, PixelFormat::rgba8Unorm);
  const auto add = [&] {
    const auto commands = queue_->makeCommandBuffer();
    const auto encoder = commands->makeComputeEncoder();
    encoder->setPipeline(pipeline("addColor"));
    encoder->setTexture(wrapped, 0);
    encoder->setTexture(target, 1);
    encoder->setValue(std::array{0.0F, 1.0F, 0.0F, 1.0F}, 2);
    encoder->dispatchThreadgroups({44, 32, 1}, {16, 16, 1});
    encoder->endEncoding();
    return commands;
  };
  loader.refusedAllocations = 100;
  EXPECT_EQ(statusOf(add()), CommandBuffer::Status::failed);
  loader.refusedAllocations = 0;
  EXPECT_THAT(log.lines(), Contains(HasSubstr("work was dropped")));
  EXPECT_EQ(statusOf(add()), CommandBuffer::Status::completed);
  const auto pixels = pixelsOf(target);
  EXPECT_THAT(std::vector(pixels.end() - 4, pixels.end()), testing::ElementsAre(0, 255, 0, 255));
}

}  // namespace
}  // namespace velicor::gpu::test
