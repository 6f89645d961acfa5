#include "loupe/loupe_geometry.h"

#include <gtest/gtest.h>

namespace velicor::loupe_geometry {
namespace {

using Zone = LoupeZone;

constexpr FrameRect large{0, 0, 175, 175};
constexpr FrameRect small{0, 0, 80, 80};
constexpr DesktopRect start{100, 200, 175, 150};

struct Expectation {
  FramePoint point;
  Zone zone;
};

void expectZones(const FrameRect& bounds, std::initializer_list<Expectation> expectations) {
  for (const auto& [point, zone] : expectations) {
    EXPECT_EQ(zoneAt(point, bounds), zone) << point.x << ", " << point.y;
  }
}

TEST(LoupeZones, aLargeLoupeHasBandsCornersChipsAndAnInterior) {
  expectZones(large, {{{88, 88}, Zone::move},
                      {{5, 88}, Zone::left},
                      {{170, 5}, Zone::bottomRight},
                      {{140, 160}, Zone::panelButton},
                      {{160, 160}, Zone::move},
                      {{168, 88}, Zone::right},
                      {{88, 3}, Zone::bottom},
                      {{88, 170}, Zone::top},
                      {{5, 5}, Zone::bottomLeft},
                      {{5, 170}, Zone::topLeft},
                      {{165, 88}, Zone::move},
                      {{10, 88}, Zone::move},
                      {{9.99, 88}, Zone::left},
                      {{165.01, 88}, Zone::right}});
}

TEST(LoupeZones, cornersWinOverChipsAndChipsOverBands) {
  // The move chip reaches into the corner square and into the top band.
  expectZones(large, {{{165, 165}, Zone::topRight},
                      {{161, 165}, Zone::move},
                      {{158, 169}, Zone::move},
                      {{140, 169}, Zone::panelButton},
                      {{152, 169}, Zone::top}});
}

TEST(LoupeZones, theEdgesOfAChipBelongToIt) {
  expectZones(large, {{{134, 154}, Zone::panelButton},
                      {{150, 170}, Zone::panelButton},
                      {{133.9, 154}, Zone::move},
                      {{150, 170.1}, Zone::top},
                      {{154, 170}, Zone::move}});
}

TEST(LoupeZones, aSmallLoupeHasNoInterior) {
  expectZones(small, {{{60, 40}, Zone::right},
                      {{70, 70}, Zone::topRight},
                      {{40, 40}, Zone::topRight},
                      {{20, 40}, Zone::left},
                      {{40, 20}, Zone::bottom},
                      {{27, 70}, Zone::top},
                      {{25, 70}, Zone::topLeft},
                      {{30, 30}, Zone::bottomLeft},
                      {{30, 50}, Zone::topLeft},
                      {{50, 30}, Zone::bottomRight},
                      {{66, 66}, Zone::move},
                      {{45, 60}, Zone::panelButton}});
}

TEST(LoupeZones, theCornerOfTheSmallestLoupeIsFourteenPointsWide) {
  const FrameRect smallest{0, 0, 60, 60};
  EXPECT_EQ(zoneAt({13.9, 13.9}, smallest), Zone::bottomLeft);
  EXPECT_EQ(zoneAt({13.9, 46.1}, smallest), Zone::topLeft);
  EXPECT_EQ(zoneAt({14, 30}, smallest), Zone::left);
}

TEST(LoupeDrag, movingKeepsTheSizeAndResizingTheOppositeEdge) {
  EXPECT_EQ(draggedFrame(Zone::move, {-300, 40}, start), (DesktopRect{-200, 240, 175, 150}));
  EXPECT_EQ(draggedFrame(Zone::left, {-50, 9}, start), (DesktopRect{50, 200, 225, 150}));
  EXPECT_EQ(draggedFrame(Zone::right, {25, 9}, start), (DesktopRect{100, 200, 200, 150}));
  EXPECT_EQ(draggedFrame(Zone::top, {9, 10}, start), (DesktopRect{100, 200, 175, 160}));
  EXPECT_EQ(draggedFrame(Zone::bottom, {9, 10}, start), (DesktopRect{100, 210, 175, 140}));
  EXPECT_EQ(draggedFrame(Zone::topLeft, {10, 20}, start), (DesktopRect{110, 200, 165, 170}));
  EXPECT_EQ(draggedFrame(Zone::topRight, {10, 20}, start), (DesktopRect{100, 200, 185, 170}));
  EXPECT_EQ(draggedFrame(Zone::bottomLeft, {10, 20}, start), (DesktopRect{110, 220, 165, 130}));
  EXPECT_EQ(draggedFrame(Zone::bottomRight, {10, 20}, start), (DesktopRect{100, 220, 185, 130}));
}

TEST(LoupeDrag, noSideGetsBelowSixty) {
  EXPECT_EQ(draggedFrame(Zone::left, {200, 0}, start), (DesktopRect{215, 200, 60, 150}));
  EXPECT_EQ(draggedFrame(Zone::right, {-200, 0}, start), (DesktopRect{100, 200, 60, 150}));
  EXPECT_EQ(draggedFrame(Zone::top, {0, -500}, start), (DesktopRect{100, 200, 175, 60}));
  EXPECT_EQ(draggedFrame(Zone::bottom, {0, 500}, start), (DesktopRect{100, 290, 175, 60}));
}

TEST(LoupeMinimum, theEdgeThatIsNotDraggedStays) {
  const DesktopRect current{100, 200, 100, 100};
  EXPECT_EQ(keepingMinimum({150, 200, 50, 100}, current), (DesktopRect{140, 200, 60, 100}));
  EXPECT_EQ(keepingMinimum({100, 200, 50, 100}, current), (DesktopRect{100, 200, 60, 100}));
  EXPECT_EQ(keepingMinimum({100.009, 200.005, 50, 40}, current), (DesktopRect{100.009, 200.005, 60, 60}));
  EXPECT_EQ(keepingMinimum({100, 260, 100, 40}, current), (DesktopRect{100, 240, 100, 60}));
  EXPECT_EQ(keepingMinimum({0, 0, 60, 60}, current), (DesktopRect{0, 0, 60, 60}));
}

TEST(LoupeMouse, anUnlockedLoupeTakesTheMouseInItsBandOnly) {
  const DesktopRect frame{100, 100, 175, 175};
  EXPECT_TRUE(takesMouse({120, 180}, frame, false, false));
  EXPECT_FALSE(takesMouse({130, 180}, frame, false, false));
  EXPECT_FALSE(takesMouse({99, 180}, frame, false, false));
  EXPECT_TRUE(takesMouse({100.5, 100.5}, frame, false, false));
  EXPECT_TRUE(takesMouse({180, 270}, frame, false, true));
}

TEST(LoupeMouse, aLockedLoupeTakesItOverThePanelChipOnly) {
  const DesktopRect frame{100, 100, 175, 175};
  EXPECT_TRUE(takesMouse({240, 260}, frame, true, true));
  EXPECT_FALSE(takesMouse({101, 180}, frame, true, false));
}

}  // namespace
}  // namespace velicor::loupe_geometry
