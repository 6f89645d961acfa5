#include "platform/desktop/struts.h"

#include <gtest/gtest.h>

namespace velicor::desktop {
namespace {

constexpr DeviceRect root{0, 0, 3000, 1000};
constexpr DeviceRect left{0, 0, 1500, 1000};
constexpr DeviceRect right{1500, 0, 1500, 900};

Strut bottomBar(std::uint32_t depth, std::uint32_t start, std::uint32_t end) {
  return readStrut({0, 0, 0, depth, 0, 0, 0, 0, 0, 0, start, end}, root);
}

TEST(Struts, aBarTakesFromItsOwnMonitorOnly) {
  const std::vector<Strut> bars{bottomBar(40, 0, 1499)};
  EXPECT_EQ(withoutStruts(left, root, bars), (DeviceRect{0, 0, 1500, 960}));
  EXPECT_EQ(withoutStruts(right, root, bars), right);
}

// Depths are measured from the root window's edge, so a lower monitor's bar reaches farther in.
TEST(Struts, theDepthCountsFromTheRootWindowsEdge) {
  EXPECT_EQ(withoutStruts(right, root, {bottomBar(140, 1500, 2999)}), (DeviceRect{1500, 0, 1500, 860}));
}

TEST(Struts, theFourNumberFormReservesWholeEdges) {
  const std::vector<Strut> bars{readStrut({30, 0, 20, 0}, root)};
  EXPECT_EQ(withoutStruts(left, root, bars), (DeviceRect{30, 20, 1470, 980}));
  EXPECT_EQ(withoutStruts(right, root, bars), (DeviceRect{1500, 20, 1500, 880}));
}

TEST(Struts, nonsenseReservesNothing) {
  EXPECT_EQ(withoutStruts(left, root, {readStrut({1, 2, 3}, root)}), left);
  EXPECT_EQ(withoutStruts(right, root, {readStrut({0, 0, 0, 5000}, root)}), right);
  constexpr std::uint32_t half = std::uint32_t{1} << 31;
  EXPECT_EQ(withoutStruts(left, root, {readStrut({half, half, half, half}, root)}), left);
  // Up to the end, however far that is said to be.
  EXPECT_EQ(withoutStruts(left, root, {bottomBar(40, 0, 0xffffffff)}), (DeviceRect{0, 0, 1500, 960}));
}

}  // namespace
}  // namespace velicor::desktop
