#include "platform/gpu/native/rasterizer.h"

#include <cmath>
#include <random>
#include <vector>

#include <gmock/gmock.h>

namespace velicor::gpu {
namespace {

constexpr int width = 37;
constexpr int height = 23;

void countCoverage(const Triangle& triangle, std::vector<int>& coverage) {
  forEachSpan(triangle, {.width = width, .height = height}, [&](const FragmentSpan& span) {
    for (int x = span.xBegin; x < span.xEnd; ++x)
      ++coverage[static_cast<std::size_t>(span.y * width + x)];
  });
}

// Four triangles around any inner point share all inner edges: no pixel is left out or drawn twice.
TEST(Rasterizer, TrianglesThatShareEdgesCoverEveryPixelOnce) {
  std::mt19937 random(7);
  std::uniform_int_distribution<int> step(-63, 63);
  constexpr std::array corners{NativeVertex{-1, -1}, NativeVertex{1, -1}, NativeVertex{1, 1},
                               NativeVertex{-1, 1}};
  for (int round = 0; round < 200; ++round) {
    // Steps of 1/64 meet pixel centres and corners often.
    const NativeVertex inner{static_cast<float>(step(random)) / 64, static_cast<float>(step(random)) / 64};
    std::vector<int> coverage(width * height);
    for (std::size_t i = 0; i < 4; ++i) {
      Triangle triangle{corners[i], corners[(i + 1) % 4], inner};
      if (round % 2) std::swap(triangle[0], triangle[1]);
      countCoverage(triangle, coverage);
    }
    ASSERT_THAT(coverage, testing::Each(1)) << inner.x << " " << inner.y;
  }
}

TEST(Rasterizer, ClipsToTheTargetAndDrawsNothingOfNoArea) {
  std::vector<int> coverage(width * height);
  countCoverage({{{-1, -1}, {3, -1}, {-1, 3}}}, coverage);
  EXPECT_THAT(coverage, testing::Each(1));
  for (const Triangle& empty :
       {Triangle{{{-1, -1}, {0, 0}, {1, 1}}}, Triangle{{{0, 0}, {0, 0}, {0, 0}}},
        Triangle{{{NAN, -1}, {3, -1}, {-1, 3}}}, Triangle{{{5, 5}, {9, 5}, {5, 9}}}}) {
    countCoverage(empty, coverage);
  }
  EXPECT_THAT(coverage, testing::Each(1));
}

}  // namespace
}  // namespace velicor::gpu
