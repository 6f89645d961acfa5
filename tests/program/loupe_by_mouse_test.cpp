// The loupe in the hand of a user, with the whole program behind it.
#include <gtest/gtest.h>

#include "program/stage.h"

namespace velicor::test {
namespace {

constexpr QColor onTheLine(0xFF, 0xF2, 0x00);
constexpr std::uint32_t lightSkin = 0xC29682;
constexpr std::uint32_t middleGrey = 0x999999;

class LoupeByMouseTest : public testing::Test {
 protected:
  LoupeByMouseTest() {
    ground_ = stage_.painter().showColour({0, 0, 1280, 800}, middleGrey);
    stage_.painter().showColour({100, 100, 300, 300}, lightSkin);
  }

  Stage stage_{Surroundings::windowManagerAndCompositor};
  xcb_window_t ground_ = 0;
};

TEST_F(LoupeByMouseTest, WhatIsUnderTheLoupeAfterADragIsWhatItShows) {
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(stage_.shows(onFrameLine(loupeAtStart), frameYellow, frameTolerance)) << velicor.log();

  // Onto the skin patch.
  const DevicePoint chip = moveChipOf(loupeAtStart);
  stage_.mouse().moveTo(chip);
  ASSERT_TRUE(stage_.takesMouse(loupeAtStart, chip));
  stage_.mouse().drag(chip, {chip.x - 400, chip.y - 180});
  EXPECT_TRUE(stage_.shows({240, 220}, onTheLine));
  EXPECT_EQ(stage_.colorAt({390, 390}), QColor::fromRgb(lightSkin)) << "outside the loupe";

  // The bottom-right corner 60 pixels further out: the loupe now ends at (388, 368).
  const DeviceRect moved = loupeAtStart.translatedBy(-400, -180);
  const DevicePoint corner{moved.right() - 5, moved.bottom() - 5};
  stage_.mouse().moveTo(corner);
  ASSERT_TRUE(stage_.takesMouse(moved, corner));
  stage_.mouse().drag(corner, {corner.x + 60, corner.y + 60});
  EXPECT_TRUE(stage_.shows({370, 350}, onTheLine));

  // Inside, the mouse belongs to the program below.
  const DeviceRect grown{moved.x, moved.y, moved.width + 60, moved.height + 60};
  stage_.mouse().moveTo({240, 220});
  EXPECT_TRUE(stage_.takesMouse({100, 100, 300, 300}, {240, 220}));
  stage_.mouse().moveTo(leftBandOf(grown));
  EXPECT_TRUE(stage_.takesMouse(grown, leftBandOf(grown)));
}

TEST_F(LoupeByMouseTest, ALockedLoupeStaysWhereItIs) {
  Launch launch = stage_.launch();
  launch.locked = true;
  RunningVelicor velicor(launch);
  ASSERT_TRUE(stage_.shows(onFrameLine(loupeAtStart), frameGrey, frameTolerance)) << velicor.log();
  const DevicePoint chip = moveChipOf(loupeAtStart);
  stage_.mouse().moveTo(chip);
  stage_.mouse().drag(chip, {chip.x - 400, chip.y - 180});
  stage_.mouse().moveTo({5, 5});

  // What the loupe answers now it has answered after the drag.
  stage_.painter().setColour(ground_, lightSkin);
  EXPECT_TRUE(stage_.shows(loupeCentre, onTheLine));
  EXPECT_EQ(stage_.colorAt({240, 220}), QColor::fromRgb(lightSkin));
}

}  // namespace
}  // namespace velicor::test
