#include <gtest/gtest.h>

#include <array>
#include <memory>

#include "platform/base/callable.h"
#include "platform/base/geometry.h"
#include "platform/base/pixel_buffer.h"

namespace velicor {
namespace {

TEST(GeometryTest, IntersectionsOfTouchingAndDistantRectanglesAreEmpty) {
  const DesktopRect left{0, 0, 100, 100};
  EXPECT_EQ(left.intersection({50, -20, 100, 70}), (DesktopRect{50, 0, 50, 50}));
  EXPECT_EQ(left.intersection({100, 0, 10, 10}).area(), 0);
  EXPECT_EQ(left.intersection({300, 300, 10, 10}), DesktopRect{});

  const DeviceRect pixels{-10, 5, 20, 20};
  EXPECT_EQ(pixels.intersection({0, 0, 100, 10}), (DeviceRect{0, 5, 10, 5}));
  EXPECT_FALSE(pixels.intersects({10, 5, 5, 5}));
  EXPECT_TRUE(pixels.contains(DeviceRect{-10, 5, 20, 20}));
  EXPECT_FALSE(pixels.contains(DeviceRect{-11, 5, 20, 20}));
}

TEST(GeometryTest, APointOnAnyEdgeIsInside) {
  const FrameRect chip{154, 154, 16, 16};
  for (const FramePoint corner : {FramePoint{154, 154}, {170, 154}, {154, 170}, {170, 170}}) {
    EXPECT_TRUE(chip.contains(corner));
  }
  EXPECT_FALSE(chip.contains({170.01, 160}));
}

TEST(GeometryTest, HalvesRoundAwayFromZero) {
  EXPECT_EQ(roundHalfAway(362.5), 363);
  EXPECT_EQ(roundHalfAway(-2.5), -3);
  EXPECT_EQ(roundHalfAway(2.4999), 2);
}

TEST(PixelBufferTest, ForeignMemoryIsReleasedOnceAndRowsFollowTheStride) {
  std::byte memory[64] = {};
  memory[32] = std::byte{9};
  int released = 0;
  {
    const PixelBuffer buffer(3, 2, 32, memory, [&] { ++released; });
    EXPECT_EQ(buffer.row(1).size(), 12u);
    EXPECT_EQ(buffer.row(1)[0], std::byte{9});
    EXPECT_EQ(released, 0);
  }
  EXPECT_EQ(released, 1);
  EXPECT_THROW(PixelBuffer(3, 2, 11, memory, {}), std::invalid_argument);
}

TEST(CallableTest, FunctionsOfAnySizeMoveAndGoOnce) {
  auto held = std::make_shared<int>(7);
  const auto check = [&](auto function) {
    EXPECT_EQ(held.use_count(), 2);
    Callable<int(int), 32> first = std::move(function), second;
    EXPECT_FALSE(second);
    second = std::move(first);
    EXPECT_FALSE(first);
    EXPECT_EQ(second(5), 12);
    EXPECT_EQ(held.use_count(), 2);
    second = nullptr;
    EXPECT_EQ(held.use_count(), 1);
  };
  check([held](int more) { return *held + more; });
  check([held, large = std::array<int, 20>{}](int more) mutable { return *held + more + large[19]++; });
}

}  // namespace
}  // namespace velicor
