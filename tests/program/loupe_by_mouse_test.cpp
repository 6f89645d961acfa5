// The loupe in the hand of a user, with the whole program behind it.
#include <gtest/gtest.h>

#include "program/stage.h"

namespace velicor::test {
namespace {

constexpr QColor yellowFrame(0xFF, 0xF2, 0x00);
constexpr std::uint32_t lightSkin = 0xC29682;
constexpr std::uint32_t middleGrey = 0x999999;

class LoupeByMouseTest : public testing::Test {
 protected:
  LoupeByMouseTest() {
    stage_.painter().showColour({0, 0, 1280, 800}, middleGrey);
    stage_.painter().showColour({100, 100, 300, 300}, lightSkin);
  }

  static QColor grey() { return QColor::fromRgb(middleGrey); }

  Stage stage_{Surroundings::windowManagerAndCompositor};
};

TEST_F(LoupeByMouseTest, WhatIsUnderTheLoupeAfterADragIsWhatItShows) {
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(stage_.shows(loupeCentre, grey())) << velicor.log();
  ASSERT_TRUE(velicor.waitForLog("capture running"));

  // Onto the skin patch, from (553, 313) to (153, 133).
  const DevicePoint chip = moveChipOf(loupeAtStart);
  stage_.mouse().moveTo(chip);
  ASSERT_TRUE(stage_.shows(leftBandOf(loupeAtStart), grey()));
  stage_.mouse().drag(chip, {chip.x - 400, chip.y - 180});
  EXPECT_TRUE(stage_.shows({240, 220}, yellowFrame));
  EXPECT_TRUE(stage_.shows({390, 390}, QColor::fromRgb(lightSkin))) << "outside the loupe";

  // The bottom-right corner 60 pixels further out: the loupe now ends at (388, 368).
  const DevicePoint corner{153 + 170, 133 + 170};
  stage_.mouse().moveTo(corner);
  stage_.mouse().drag(corner, {corner.x + 60, corner.y + 60});
  EXPECT_TRUE(stage_.shows({370, 350}, yellowFrame));
}

TEST_F(LoupeByMouseTest, ALockedLoupeStaysWhereItIs) {
  Launch launch = stage_.launch();
  launch.locked = true;
  RunningVelicor velicor(launch);
  ASSERT_TRUE(velicor.waitForLog("capture running"));
  ASSERT_TRUE(stage_.shows(loupeCentre, grey()));
  const QImage before = stage_.screenshot().copy(500, 260, 280, 280);
  const DevicePoint chip = moveChipOf(loupeAtStart);
  stage_.mouse().moveTo(chip);
  stage_.mouse().drag(chip, {chip.x - 400, chip.y - 180});
  stage_.mouse().moveTo({5, 5});
  EXPECT_TRUE(stage_.shows({240, 220}, QColor::fromRgb(lightSkin)));
  EXPECT_EQ(stage_.screenshot().copy(500, 260, 280, 280), before);
}

}  // namespace
}  // namespace velicor::test
