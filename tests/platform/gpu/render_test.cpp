#include <array>

#include <gmock/gmock.h>

#include "platform/gpu/device_fixture.h"

namespace velicor::gpu::test {
namespace {

using testing::ElementsAre;

class RenderTest : public DeviceTest {
 protected:
  // One triangle over a target of 8 × 8, clear colour (0.02, 0.5, 1, 0).
  std::vector<std::uint8_t> drawn(std::span<const NativeVertex> triangle) {
    const auto target = texture(8, 8, StorageMode::deviceOnly, PixelFormat::bgra8Unorm);
    const auto commands = queue_->makeCommandBuffer();
    const auto encoder = commands->makeRenderEncoder({target, {0.02, 0.5, 1, 0}});
    encoder->setPipeline(coordinatesPipeline());
    encoder->setVertexBytes(std::as_bytes(triangle), 0);
    encoder->drawTriangles(0, 3);
    encoder->endEncoding();
    commands->commit();
    return pixelsOf(target);
  }

  static std::span<const std::uint8_t> at(const std::vector<std::uint8_t>& pixels, std::size_t x,
                                          std::size_t y) {
    return std::span(pixels).subspan((y * 8 + x) * 4, 4);
  }
};

TEST_P(RenderTest, InterpolatesAtPixelCentresAndKeepsTheRest) {
  // The upper left half of the left half: u grows to the right, v downwards.
  const std::array triangle{NativeVertex{-1, 1, 0, 0}, NativeVertex{0, 1, 1, 0}, NativeVertex{-1, -1, 0, 1}};
  const auto pixels = drawn(triangle);
  EXPECT_THAT(at(pixels, 0, 0), ElementsAre(0, 16, 32, 255));
  EXPECT_THAT(at(pixels, 2, 1), ElementsAre(0, 48, 159, 255));
  EXPECT_THAT(at(pixels, 3, 4), ElementsAre(255, 128, 5, 0));
  EXPECT_THAT(at(pixels, 4, 0), ElementsAre(255, 128, 5, 0));
  EXPECT_THAT(at(pixels, 0, 6), ElementsAre(0, 207, 32, 255));
}

INSTANTIATE_TEST_SUITE_P(Devices, RenderTest, testing::ValuesIn(allDevices()), deviceName);

}  // namespace
}  // namespace velicor::gpu::test
