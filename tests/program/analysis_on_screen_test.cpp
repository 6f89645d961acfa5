// The main job, as it is seen on the screen: another program's pixels, analysed in place.
#include <gtest/gtest.h>

#include "program/stage.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

constexpr std::uint32_t lightSkin = 0xC29682;   // the chart's light skin: on the line
constexpr std::uint32_t greenSkin = 0xC29E82;   // the same with 5 % more green
constexpr std::uint32_t middleGrey = 0x999999;  // 60 % luma: the skin target of the heatmap
constexpr DeviceRect screen{0, 0, 1280, 800};

// The standard palette.
constexpr QColor onTheLine(0xFF, 0xF2, 0x00);
constexpr QColor tooGreen(0x00, 0xFF, 0x26);
constexpr QColor skinTarget(0xEB, 0xD1, 0x1A);

QColor rgb(std::uint32_t value) { return QColor::fromRgb(value); }

class AnalysisOnScreenTest : public testing::TestWithParam<Surroundings> {
 protected:
  Stage stage_{GetParam()};
};

TEST_P(AnalysisOnScreenTest, TheSkinIndicatorAnswersInPlaceAndFollowsTheScreen) {
  const xcb_window_t window = stage_.painter().showColour(screen, lightSkin);
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(stage_.shows(loupeCentre, onTheLine)) << velicor.log();
  EXPECT_EQ(stage_.colorAt({300, 200}), rgb(lightSkin)) << "outside the loupe nothing changes";

  stage_.painter().setColour(window, greenSkin);
  EXPECT_TRUE(stage_.shows(loupeCentre, tooGreen));
  stage_.painter().setColour(window, middleGrey);
  EXPECT_TRUE(stage_.shows(loupeCentre, rgb(middleGrey)));
}

TEST_P(AnalysisOnScreenTest, TheHeatmapNeverAnalysesItself) {
  // Yellow analysed again would be painted in another colour; a pixel in the corner keeps the frames coming.
  const xcb_window_t window = stage_.painter().showColour(screen, middleGrey);
  Launch launch = stage_.launch();
  launch.mode = 2;
  RunningVelicor velicor(launch);
  ASSERT_TRUE(stage_.shows(loupeCentre, skinTarget, 1)) << velicor.log();
  for (std::uint32_t i = 0; i < 20; ++i) {
    const DevicePoint blinking{loupeAtStart.x + 30, loupeAtStart.bottom() - 30};
    const std::uint32_t pixel = i % 2 == 0 ? 0x000000 : 0xFFFFFF;
    stage_.painter().fill(window, {blinking.x, blinking.y, 1, 1}, pixel);
    ASSERT_TRUE(stage_.shows(blinking, i % 2 == 0 ? QColor(0x6B, 0x00, 0x8C) : QColor(0xFF, 0x00, 0x00), 1));
    ASSERT_TRUE(stage_.shows(loupeCentre, skinTarget, 1));
  }
}

QImage patternInside(int seed, QRect area) {
  QImage image(area.size(), QImage::Format_RGB32);
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      image.setPixel(x, y, Pattern{seed}.at(x + area.x(), y + area.y()) | 0xFF000000);
    }
  }
  return image;
}

TEST_P(AnalysisOnScreenTest, TheOriginalModeShowsTheScreenUnchanged) {
  const xcb_window_t window = stage_.painter().showColour(screen, middleGrey);
  Launch launch = stage_.launch();
  launch.mode = 0;
  RunningVelicor velicor(launch);
  ASSERT_TRUE(stage_.shows(onFrameLine(loupeAtStart), frameYellow, frameTolerance)) << velicor.log();
  EXPECT_TRUE(stage_.shows(loupeCentre, rgb(middleGrey)));
  const QRect interior(580, 350, 100, 100);
  for (const int seed : {3, 4}) {
    stage_.painter().setPattern(window, Pattern{seed});
    EXPECT_TRUE(waitUntil([&] { return stage_.screenshot().copy(interior) == patternInside(seed, interior); }));
  }
}

TEST_P(AnalysisOnScreenTest, HalfOpacityMixesTheAnswerWithTheScreen) {
  stage_.painter().showColour(screen, middleGrey);
  Launch launch = stage_.launch();
  launch.mode = 2;
  launch.opacity = 0.5;
  RunningVelicor velicor(launch);
  EXPECT_TRUE(stage_.shows(loupeCentre, QColor(0xC2, 0xB5, 0x5A), 2)) << velicor.log();
}

TEST_P(AnalysisOnScreenTest, WindowsThatComeAndGoUnderTheLoupeAreSeenAsTheyAre) {
  stage_.painter().showColour(screen, middleGrey);
  // Its place in the stack, below the loupe, is kept while it is not shown.
  const xcb_window_t patch = stage_.painter().showColour({600, 360, 80, 80}, lightSkin);
  stage_.painter().unmap(patch);
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(stage_.shows(onFrameLine(loupeAtStart), frameYellow, frameTolerance)) << velicor.log();
  ASSERT_TRUE(stage_.shows(loupeCentre, rgb(middleGrey)));
  stage_.painter().map(patch);
  EXPECT_TRUE(stage_.shows(loupeCentre, onTheLine));
  stage_.painter().move(patch, 560, 360);
  EXPECT_TRUE(stage_.shows({675, 400}, rgb(middleGrey)));
  EXPECT_TRUE(stage_.shows({630, 400}, onTheLine));
  stage_.painter().resize(patch, 60, 30);
  EXPECT_TRUE(stage_.shows({630, 400}, rgb(middleGrey)));
  stage_.painter().destroy(patch);
  EXPECT_TRUE(stage_.shows({600, 375}, rgb(middleGrey)));
}

INSTANTIATE_TEST_SUITE_P(, AnalysisOnScreenTest,
                         testing::Values(Surroundings::noManager, Surroundings::windowManager,
                                         Surroundings::windowManagerAndCompositor),
                         [](const auto& test) { return nameOf(test.param); });

}  // namespace
}  // namespace velicor::test
