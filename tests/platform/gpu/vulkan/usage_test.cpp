// Which commands wait for which, and what their time is.
#include <gmock/gmock.h>

#include "platform/gpu/device_fixture.h"
#include "platform/gpu/vulkan/accesses.h"
#include "platform/gpu/vulkan/faulty_loader.h"

namespace velicor::gpu::test {
namespace {

using namespace vulkan;

constexpr VkPipelineStageFlags compute = VK_PIPELINE_STAGE_COMPUTE_SHADER_BIT;
constexpr VkPipelineStageFlags fragment = VK_PIPELINE_STAGE_FRAGMENT_SHADER_BIT;
constexpr VkPipelineStageFlags transfer = VK_PIPELINE_STAGE_TRANSFER_BIT;

TEST(VulkanUsage, OnlyConflictsWait) {
  Usage buffer;
  EXPECT_FALSE(buffer.then(accesses::copyFromBuffer));
  EXPECT_FALSE(buffer.then(accesses::copyFromBuffer)) << "reads go side by side";
  const auto afterReads = buffer.then(accesses::functionBuffer(compute));
  ASSERT_TRUE(afterReads);
  EXPECT_EQ(afterReads->stages, transfer);
  const auto afterWrite = buffer.then(accesses::copyFromBuffer);
  ASSERT_TRUE(afterWrite);
  EXPECT_EQ(afterWrite->stages, compute);
  EXPECT_TRUE(afterWrite->access & VK_ACCESS_SHADER_WRITE_BIT);
  EXPECT_FALSE(buffer.then(accesses::copyFromBuffer)) << "sees that write already";
  const auto writeAgain = buffer.then(accesses::copyToBuffer);
  ASSERT_TRUE(writeAgain);
  EXPECT_EQ(writeAgain->stages, compute | transfer);
}

TEST(VulkanUsage, AReadFromElsewhereWaitsForAChangeOfLayout) {
  Usage image;
  ASSERT_TRUE(image.then(accesses::copyToImage));
  ASSERT_TRUE(image.then(accesses::readImage(compute, false)));
  const auto elsewhere = image.then(accesses::readImage(fragment, false));
  ASSERT_TRUE(elsewhere);
  EXPECT_EQ(elsewhere->stages, compute);
  EXPECT_EQ(elsewhere->layout, image.layout());
  EXPECT_FALSE(image.then(accesses::readImage(compute, false)));
  const auto moves = image.then(accesses::copyFromImage);
  ASSERT_TRUE(moves);
  EXPECT_EQ(moves->stages, compute | fragment);
}

// What keeps the tests honest about barriers.
TEST(VulkanUsage, AMissingBarrierIsComplainedAbout) {
  makeCheckedVulkanDevice();
  FaultyLoader loader;
  const auto complaints = std::make_shared<std::atomic<int>>(0);
  VulkanOptions options;
  options.softwareToo = true;
  options.entryPoint = loader.entryPoint();
  options.onComplaint = [complaints](std::string_view text) {
    *complaints += text.find("SYNC-HAZARD") != text.npos;
  };
  for (const bool drops : {false, true}) {
    loader.dropsBarriers = false;
    const auto device = makeVulkanDevice(options);
    loader.dropsBarriers = drops;
    const auto buffer = device->makeBuffer(64, StorageMode::deviceOnly);
    const auto commands = device->makeCommandQueue()->makeCommandBuffer();
    const auto blit = commands->makeBlitEncoder();
    blit->fill({buffer, 0, 64, 1});
    blit->fill({buffer, 0, 64, 2});
    blit->endEncoding();
    commands->commit();
    commands->waitUntilCompleted();
    EXPECT_EQ(*complaints, drops ? 1 : 0);
  }
}

class PassTimes : public testing::Test, protected Workbench {
 protected:
  PassTimes() : Workbench(makeCheckedVulkanDevice(options())) {}

  VulkanOptions options() {
    VulkanOptions options;
    options.onPassTimes = [this](std::span<const PassTime> times) {
      measured.assign(times.begin(), times.end());
    };
    return options;
  }

  std::vector<PassTime> measured;  // read after the work
};

TEST_F(PassTimes, AreThereBeforeTheHandlers) {
  const auto picture = texture(256, 256);
  const auto commands = queue_->makeCommandBuffer();
  const auto blit = commands->makeBlitEncoder();
  blit->fill({device_->makeBuffer(1 << 20, StorageMode::deviceOnly), 0, 1 << 20, 7});
  blit->endEncoding();
  const auto encoder = commands->makeComputeEncoder();
  encoder->setPipeline(pipeline("addColor"));
  encoder->setTexture(picture, 0);
  encoder->setTexture(texture(256, 256), 1);
  encoder->setValue(std::array{1.0F, 0.0F, 0.0F, 0.0F}, 2);
  encoder->dispatchThreadgroups({16, 16, 1}, {16, 16, 1});
  encoder->endEncoding();
  std::size_t seen = 0;
  commands->addCompletedHandler([&](const CommandBuffer&) { seen = measured.size(); });
  commands->commit();
  commands->waitUntilCompleted();
  ASSERT_EQ(seen, 2U);
  EXPECT_EQ(measured[0].name, "fill");
  EXPECT_EQ(measured[1].name, "addColor");
  EXPECT_GT(measured[1].microseconds, 0);
}

}  // namespace
}  // namespace velicor::gpu::test
