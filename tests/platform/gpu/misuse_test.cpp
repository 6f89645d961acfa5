// Mistakes in the program end it with a line that names them, on every device alike.
#include <array>
#include <functional>

#include <gtest/gtest.h>

#include "platform/gpu/device_fixture.h"

namespace velicor::gpu::test {
namespace {

class MisuseTest : public DeviceTest {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  std::shared_ptr<CommandBuffer> commands_ = queue_->makeCommandBuffer();
  std::shared_ptr<Texture> texture_ = texture(4, 4);
  std::shared_ptr<Buffer> buffer_ = device_->makeBuffer(16, StorageMode::deviceOnly);
};

TEST_P(MisuseTest, OfResources) {
  EXPECT_DEATH(device_->makeBuffer(0, StorageMode::shared), "misuse: a buffer without bytes");
  EXPECT_DEATH(texture(4, 0), "misuse: a texture without pixels");
  EXPECT_DEATH(buffer_->contents(), "misuse: the bytes of a deviceOnly buffer");
  std::array<std::byte, 64> bytes;
  EXPECT_DEATH(texture_->getBytes(bytes, 16, {{1, 0}, {4, 4}}), "misuse: a transfer reaches outside");
  EXPECT_DEATH(texture_->getBytes(bytes, 15, {{0, 0}, {4, 4}}), "misuse: the rows of a transfer overlap");
  EXPECT_DEATH(texture_->getBytes(std::span(bytes).first(63), 16, {{0, 0}, {4, 4}}), "misuse: the memory");
  EXPECT_DEATH(texture(4, 4, StorageMode::deviceOnly)->getBytes(bytes, 16, {{0, 0}, {4, 4}}),
               "misuse: the bytes of a deviceOnly texture");
}

TEST_P(MisuseTest, OfBlits) {
  const auto blit = commands_->makeBlitEncoder();
  EXPECT_DEATH(blit->fill({buffer_, 1, 16, 0}), "misuse: a fill outside its buffer");
  EXPECT_DEATH(blit->copy({buffer_, 0, buffer_, 8, 4}), "misuse: a copy of a buffer to itself");
  const auto other = texture(3, 3);
  EXPECT_DEATH(blit->copy({texture_, {0, 0}, {4, 4}, other, {0, 0}}),
               "misuse: a copy to outside its texture");
  EXPECT_DEATH(blit->copy({texture_, {2, 2}, {3, 3}, other, {0, 0}}),
               "misuse: a copy from outside its texture");
  const auto foreign = GetParam().make()->makeTexture({.width = 4, .height = 4});
  EXPECT_DEATH(blit->copy({foreign, {0, 0}, {1, 1}, texture_, {0, 0}}), "misuse: .* another device");
}

TEST_P(MisuseTest, OfDispatches) {
  const auto encoder = commands_->makeComputeEncoder();
  EXPECT_DEATH(encoder->dispatchThreadgroups({}, {}), "misuse: a dispatch without a pipeline");
  encoder->setPipeline(pipeline("addOne"));
  EXPECT_DEATH(encoder->dispatchThreadgroups({0, 1, 1}, {}), "misuse: a dispatch over no or a deep grid");
  EXPECT_DEATH(encoder->setTexture(texture_, maxTextureBindings), "misuse: a binding index");
  EXPECT_DEATH(encoder->setBuffer(buffer_, 0, -1), "misuse: a binding index");
  EXPECT_DEATH(encoder->setBuffer(buffer_, 16, 0), "misuse: a buffer is bound from behind its end");
  EXPECT_DEATH(encoder->setBytes({}, 0), "misuse: inline bytes");
}

TEST_P(MisuseTest, OfDraws) {
  const auto unusable = device_->makeTexture({.width = 4, .height = 4});
  EXPECT_DEATH(commands_->makeRenderEncoder({unusable, {}}), "misuse: a texture that is no render target");
  const auto encoder = commands_->makeRenderEncoder({texture_, {}});
  EXPECT_DEATH(encoder->drawTriangles(0, 3), "misuse: a draw without a pipeline");
  EXPECT_DEATH(encoder->setPipeline(coordinatesPipeline()), "misuse: a pipeline for another pixel format");
  EXPECT_DEATH(encoder->setFragmentTexture(texture_, 0), "misuse: a texture is drawn into itself");
}

TEST_P(MisuseTest, OfTheOrderOfCalls) {
  auto blit = commands_->makeBlitEncoder();
  EXPECT_DEATH(commands_->makeComputeEncoder(), "misuse: .* while one of its encoders is open");
  EXPECT_DEATH(commands_->commit(), "misuse: .* while one of its encoders is open");
  blit->endEncoding();
  EXPECT_DEATH(blit->fill({buffer_, 0, 16, 0}), "misuse: an encoder is used after its end");
  blit = commands_->makeBlitEncoder();
  blit = nullptr;  // ends it as well
  EXPECT_DEATH(commands_->waitUntilCompleted(), "misuse: waiting for a command buffer that was never");
  commands_->commit();
  EXPECT_DEATH(commands_->commit(), "misuse: a command buffer is changed after its commit");
}

INSTANTIATE_TEST_SUITE_P(Devices, MisuseTest, testing::ValuesIn(allDevices()), deviceName);

}  // namespace
}  // namespace velicor::gpu::test
