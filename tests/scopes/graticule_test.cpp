#include <cmath>
#include <numbers>

#include <gtest/gtest.h>
#include <QImage>

#include "scopes/parade_graticule.h"
#include "scopes/vectorscope_graticule.h"

namespace velicor {
namespace {

QImage drawing(Graticule& graticule, QSize size) {
  graticule.resize(size);
  QImage image(size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  graticule.render(&image, {}, {}, QWidget::DrawChildren);
  return image;
}

int alphaAt(const QImage& image, int x, int y) { return qAlpha(image.pixel(x, y)); }

// The row of a column that is covered most, between two rows.
int lineIn(const QImage& image, int x, int top, int bottom) {
  int best = top;
  for (int y = top; y <= bottom; ++y) {
    if (alphaAt(image, x, y) > alphaAt(image, x, best)) best = y;
  }
  return best;
}

// How many pixels of these rows are covered where the parade's labels are.
int inked(const QImage& image, int from, int to) {
  int total = 0;
  for (int y = from; y <= to; ++y) {
    for (int x = 5; x < 20; ++x)
      total += alphaAt(image, x, y) > 90 ? 1 : 0;
  }
  return total;
}

TEST(VectorscopeGraticuleTest, targetsStandWhereTheirColoursFall) {
  struct Expected {
    const char* label;
    double cb, cr, degrees, distance;
  };
  constexpr Expected expected[] = {
      {"R", -0.085929, 0.375000, 102.9, 0.3847},  {"G", -0.289071, -0.340615, 229.7, 0.4467},
      {"B", 0.375000, -0.034385, 354.8, 0.3766},  {"Cy", 0.085929, -0.375000, 282.9, 0.3847},
      {"Mg", 0.289071, 0.340615, 49.7, 0.4467},   {"Yl", -0.375000, 0.034385, 174.8, 0.3766}};
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    const VectorscopeGraticule::Target& target = VectorscopeGraticule::targets()[i];
    EXPECT_STREQ(target.label, expected[i].label);
    EXPECT_NEAR(target.cb, expected[i].cb, 5e-7);
    EXPECT_NEAR(target.cr, expected[i].cr, 5e-7);
    EXPECT_NEAR(std::hypot(target.cb, target.cr), expected[i].distance, 5e-5);
    const double degrees = std::atan2(target.cr, target.cb) * 180 / std::numbers::pi;
    EXPECT_NEAR(degrees < 0 ? degrees + 360 : degrees, expected[i].degrees, 0.05);
  }
}

TEST(VectorscopeGraticuleTest, drawsRingsCrosshairLineAndBoxesWhereTheyBelong) {
  VectorscopeGraticule graticule;
  const QImage image = drawing(graticule, {400, 200});
  EXPECT_GT(alphaAt(image, 2, lineIn(image, 2, 95, 105)), 20) << "the crosshair spans all of a wide canvas";
  EXPECT_EQ(lineIn(image, 2, 90, 110), 100);
  EXPECT_GT(qAlpha(image.pixel(225, 100 - 1)) + qAlpha(image.pixel(225, 100 + 1)), 0) << "the smallest ring is round";
  EXPECT_EQ(alphaAt(image, 200 + 110, 100 - 30), 0) << "outside the rings nothing";

  // Half-way along the skin-tone line; it stretches with the canvas.
  const QPoint half(200 + static_cast<int>(400 * -0.5446390350150272 * 0.25),
                    100 + static_cast<int>(200 * -0.838670567945424 * 0.25));
  QRgb line = 0;
  for (int dy = -1; dy <= 1; ++dy) line = std::max(line, image.pixel(half.x(), half.y() + dy));
  EXPECT_GT(qRed(line), 100);
  EXPECT_LT(qBlue(line), 30) << "yellow";

  // The box of B, 10 points wide around (350, 107).
  EXPECT_GT(alphaAt(image, 345, 107), 50);
  EXPECT_GT(alphaAt(image, 355, 107), 50);
  EXPECT_GT(alphaAt(image, 350, lineIn(image, 350, 110, 114)), 50);
  EXPECT_EQ(alphaAt(image, 347, 105), 0) << "an empty box";

  graticule.setCornerRadius(6);
  const QImage clipped = drawing(graticule, {200, 200});
  EXPECT_EQ(alphaAt(clipped, 0, 0), 0);
}

TEST(ParadeGraticuleTest, labelsAndLinesStandAtTheirLevels) {
  ParadeGraticule graticule;
  const QImage image = drawing(graticule, {300, 100});
  EXPECT_EQ(lineIn(image, 299, 0, 10), 0);
  EXPECT_EQ(lineIn(image, 299, 90, 99), 99);
  for (const int y : {25, 50, 75}) {
    EXPECT_GT(alphaAt(image, 34, y) + alphaAt(image, 38, y), 20) << y;
    EXPECT_EQ(alphaAt(image, 33, y - 3), 0) << y;
    EXPECT_TRUE((alphaAt(image, 34, y) == 0) != (alphaAt(image, 38, y) == 0)) << "four on, four off at " << y;
  }
  // The labels' middles: the one of the highest level hangs below its line.
  for (const int centre : {93, 68, 43, 18, 8})
    EXPECT_GT(inked(image, centre - 2, centre + 2), 5) << centre;
}

// That of 100 reaches down to row 11; between it and that of 75 a row is free.
TEST(ParadeGraticuleTest, noLabelIsPrintedOverAnother) {
  for (const int height : {54, 84, 91, 92}) {
    ParadeGraticule graticule;
    const QImage image = drawing(graticule, {3 * height, height});
    EXPECT_GT(inked(image, 5, 11), 10) << height;
    EXPECT_EQ(inked(image, 12, 12), 0) << height;
    EXPECT_EQ(inked(image, 13, height / 4 - 2) > 0, height >= 92) << height;
    EXPECT_GT(inked(image, height / 2 - 9, height / 2 - 5), 5) << height;
  }
}

}  // namespace
}  // namespace velicor
