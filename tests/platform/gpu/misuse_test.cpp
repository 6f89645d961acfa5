// Mistakes in the program end it with a line that names them: one of every kind.
#include <array>

#include <gtest/gtest.h>

#include "platform/gpu/device_fixture.h"

namespace velicor::gpu::test {
namespace {

using MisuseTest = DeviceTest;

TEST_P(MisuseTest, EndsTheProgram) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto commands = queue_->makeCommandBuffer();
  const auto target = texture(4, 4);
  const auto buffer = device_->makeBuffer(16, StorageMode::deviceOnly);
  std::array<std::byte, 64> bytes;
  EXPECT_DEATH(target->getBytes(bytes, 16, {{1, 0}, {4, 4}}), "misuse: a transfer reaches outside");
  EXPECT_DEATH(target->getBytes(std::span(bytes).first(63), 16, {{0, 0}, {4, 4}}), "misuse: the memory");

  auto blit = commands->makeBlitEncoder();
  EXPECT_DEATH(blit->fill({buffer, 1, 16, 0}), "misuse: a fill outside its buffer");
  EXPECT_DEATH(blit->copy({target, {2, 2}, {3, 3}, texture(3, 3), {0, 0}}),
               "misuse: a copy from outside its texture");
  const auto foreign = GetParam().make()->makeTexture({.width = 4, .height = 4});
  EXPECT_DEATH(blit->copy({foreign, {0, 0}, {1, 1}, target, {0, 0}}), "misuse: .* another device");
  EXPECT_DEATH(commands->commit(), "misuse: .* while one of its encoders is open");
  blit->endEncoding();
  EXPECT_DEATH(blit->fill({buffer, 0, 16, 0}), "misuse: an encoder is used after its end");

  {
    const auto dispatch = commands->makeComputeEncoder();
    EXPECT_DEATH(dispatch->dispatchThreadgroups({}, {}), "misuse: a dispatch without a pipeline");
    EXPECT_DEATH(dispatch->setTexture(target, maxTextureBindings), "misuse: a binding index");
  }
  const auto draw = commands->makeRenderEncoder({target, {}});
  EXPECT_DEATH(draw->setFragmentTexture(target, 0), "misuse: a texture is drawn into itself");
  draw->endEncoding();
  commands->commit();
  EXPECT_DEATH(commands->commit(), "misuse: a command buffer is changed after its commit");
}

INSTANTIATE_TEST_SUITE_P(Devices, MisuseTest, testing::ValuesIn(allDevices()), deviceName);

}  // namespace
}  // namespace velicor::gpu::test
