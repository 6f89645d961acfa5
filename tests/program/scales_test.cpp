// The loupe and the scopes at scales with a fraction: they stand, capture and answer to the pixel.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <map>
#include <utility>

#include "analysis/kernels/pixel_math.h"
#include "platform/base/geometry.h"
#include "program/screen_settings.h"
#include "program/stage.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

constexpr Pattern pattern{7};
constexpr int frameWidth = 30;  // points, and more than the chips need

struct Setting {
  const char* name;
  const char* variable;
  double scale;
};

// What the skin indicator makes of a pixel, in the standard colours.
QRgb answerTo(std::uint32_t rgb) {
  const color::Pixel pixel{int(rgb >> 16 & 255U), int(rgb >> 8 & 255U), int(rgb & 255U)};
  const int luma = color::lumaOf(pixel);
  switch (color::skinZone(pixel, luma)) {
    case color::zoneOnLine:
      return qRgb(255, 242, 0);
    case color::zoneGreen:
      return qRgb(0, 255, 38);
    case color::zonePink:
      return qRgb(255, 26, 191);
    default:
      return qRgb(color::greyOf(luma), color::greyOf(luma), color::greyOf(luma));
  }
}

class ScalesTest : public testing::TestWithParam<Setting> {
 protected:
  // The loupe's pixels when it is this many points right of where it starts, and this many wider.
  static DeviceRect loupeAt(double right, double wider) {
    const double scale = GetParam().scale;
    const auto pixels = [scale](double points) { return roundHalfAway(points * scale); };
    const double x = 1280 / scale / 2 - 87.5;
    const double y = 800 / scale / 2 - 87.5;
    return {pixels(x + right), pixels(y), pixels(175 + wider), pixels(175)};
  }

  // Every pixel of its inside is the answer to the one that lies below.
  testing::AssertionResult answersIn(const DeviceRect& loupe) {
    const int margin = roundHalfAway(frameWidth * GetParam().scale);
    int wrong = 0;
    const bool right = waitUntil([&] {
      const QImage image = stage_.screenshot();
      wrong = 0;
      for (int y = loupe.y + margin; y < loupe.bottom() - margin; ++y) {
        for (int x = loupe.x + margin; x < loupe.right() - margin; ++x) {
          if (image.pixel(x, y) != answerTo(pattern.at(x, y))) ++wrong;
        }
      }
      return wrong == 0;
    });
    return right ? testing::AssertionSuccess() : testing::AssertionFailure() << wrong << " pixels are wrong";
  }

  Stage stage_{Surroundings::windowManagerAndCompositor};
};

TEST_P(ScalesTest, TheAnswerLiesOnItsPixelsWhereverTheLoupeIs) {
  stage_.painter().lower(stage_.painter().showPattern({0, 0, 1280, 800}, pattern));
  Launch launch = stage_.launch();
  launch.environment = {GetParam().variable};
  RunningVelicor velicor(launch);
  ASSERT_TRUE(stage_.hasKeyboard("Velicor")) << velicor.log();
  stage_.mouse().strike({key::f6});
  ASSERT_TRUE(stage_.hasKeyboard(loupeAt(0, 0)));
  stage_.mouse().strike({key::space});  // the scopes panel would lie over the loupe
  for (const int right : {0, 1, 2, 3}) {
    EXPECT_TRUE(stage_.hasKeyboard(loupeAt(right, 0)));
    EXPECT_TRUE(answersIn(loupeAt(right, 0))) << right;
    stage_.mouse().strike({key::right});
  }
  for (const int wider : {1, 2}) {
    stage_.mouse().strike({key::control, key::right});
    EXPECT_TRUE(stage_.hasKeyboard(loupeAt(4, wider)));
    EXPECT_TRUE(answersIn(loupeAt(4, wider))) << wider << " points wider";
  }
  // The line of the frame is on the last column.
  const DeviceRect loupe = loupeAt(4, 2);
  EXPECT_TRUE(stage_.shows({loupe.right(), loupe.y + 60},
                           QColor::fromRgb(pattern.at(loupe.right(), loupe.y + 60))));
  EXPECT_TRUE(waitUntil([&] {
    return stage_.colorAt({loupe.right() - 1, loupe.y + 60}) !=
           QColor::fromRgb(pattern.at(loupe.right() - 1, loupe.y + 60));
  }));
}

class FractionTest : public ScalesTest {
 protected:
  // Of ground without a break, in one column of pixels.
  struct Run {
    int top;
    int bottom;
  };

  static bool isGround(const QImage& image, int x, int y) { return image.pixel(x, y) == qRgb(5, 5, 5); }
  static bool isLine(const QImage& image, int x, int y) { return qRed(image.pixel(x, y)) > 0x40; }

  static Run firstRun(const QImage& image, int x) {
    Run run{0, 0};
    while (run.top < image.height() - 1 && !isGround(image, x, run.top))
      ++run.top;
    run.bottom = run.top;
    while (run.bottom < image.height() && isGround(image, x, run.bottom))
      ++run.bottom;
    return run;
  }

  static Run lastRun(const QImage& image, int x) {
    const Run run = firstRun(image.mirrored(), x);
    return {image.height() - run.bottom, image.height() - run.top};
  }
};

// The vectorscope's first column that its corners leave whole has nothing in it down to the outer ring. The
// parade has neither a trace nor a dash in its gap between red and green: a line, ground, a line.
TEST_P(FractionTest, TheScopesHaveNoSeamAndBothEndLines) {
  stage_.painter().lower(stage_.painter().showColour({0, 0, 1280, 800}, 0));
  Launch launch = stage_.launch();
  launch.environment = {GetParam().variable};
  RunningVelicor velicor(launch);
  const double scale = GetParam().scale;
  const double width = std::round(std::max(0.75 * (800 / scale - 386), 160.0));  // points
  const auto column = [&](double x) { return roundHalfAway(1280 - (180 + width / 2 - x) * scale); };
  const int gap = column(width * 257.5 / 780);
  Run vectorscope{}, parade{};
  EXPECT_TRUE(waitUntil([&] {
    const QImage image = stage_.screenshot();
    vectorscope = firstRun(image, column(5));
    parade = lastRun(image, gap);
    return vectorscope.bottom - vectorscope.top >= 40 * scale &&
           parade.bottom - parade.top >= (width / 3 - 3) * scale && isLine(image, gap, parade.top - 1) &&
           isLine(image, gap, parade.bottom);
  })) << vectorscope.top
      << " to " << vectorscope.bottom << ", " << parade.top << " to " << parade.bottom << velicor.log();
}

class ChangingScaleTest : public testing::Test {
 protected:
  ChangingScaleTest() { stage_.painter().lower(stage_.painter().showPattern({0, 0, 1280, 800}, pattern)); }

  // The screen when nothing has changed for a while.
  QImage settledScreen() {
    QImage screen = stage_.screenshot();
    for (int same = 0; same < 10; ++same) {
      waitUntil([] { return false; }, std::chrono::milliseconds(100));
      const QImage next = stage_.screenshot();
      if (next != std::exchange(screen, next)) same = 0;
    }
    return screen;
  }

  QImage screenOfAStartAt(int dots) {
    setDotsPerInch(stage_.painter(), dots);
    RunningVelicor velicor(stage_.launch());
    EXPECT_TRUE(stage_.hasKeyboard("Velicor")) << velicor.log();
    EXPECT_TRUE(velicor.waitForLog("capture running")) << velicor.log();
    return settledScreen();
  }

  Stage stage_{Surroundings::windowManagerAndCompositor};
};

TEST_F(ChangingScaleTest, LooksAsIfStartedAnew) {
  std::map<int, QImage> wanted;
  for (const int dots : {144, 120, 96}) wanted[dots] = screenOfAStartAt(dots);
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(waitUntil([&] { return stage_.screenshot() == wanted[96]; })) << velicor.log();
  for (const int dots : {144, 120, 96}) {
    setDotsPerInch(stage_.painter(), dots);
    EXPECT_TRUE(waitUntil([&] { return stage_.screenshot() == wanted[dots]; })) << dots << velicor.log();
  }
}

INSTANTIATE_TEST_SUITE_P(, ScalesTest,
                         testing::Values(Setting{"OneAndAQuarter", "QT_SCALE_FACTOR=1.25", 1.25},
                                         Setting{"OneAndAHalfOfTheScreen", "QT_SCREEN_SCALE_FACTORS=screen=1.5", 1.5},
                                         Setting{"Two", "QT_SCALE_FACTOR=2", 2}),
                         [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(, FractionTest,
                         testing::Values(Setting{"OneAndAQuarter", "QT_SCALE_FACTOR=1.25", 1.25},
                                         Setting{"OneAndAHalf", "QT_SCALE_FACTOR=1.5", 1.5}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace velicor::test
