#include "loupe/loupe_drawing.h"

#include <cmath>

#include <gtest/gtest.h>
#include <QImage>
#include <QPainter>

#include "platform/desktop/look.h"

namespace velicor {
namespace {

constexpr int side = 175;

struct Case {
  double scale;
  bool locked;
  bool panelVisible;
  bool interacting;
};

class LoupeDrawing : public testing::TestWithParam<Case> {
 protected:
  void SetUp() override {
    const Case& shown = GetParam();
    const int pixels = static_cast<int>(std::ceil(side * shown.scale));
    picture = QImage(pixels, pixels, QImage::Format_ARGB32);
    picture.setDevicePixelRatio(shown.scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    const double points = pixels / shown.scale;
    drawLoupeFrame(painter, {0, 0, points, points},
                   {{0, 0, side, side}, shown.locked, shown.panelVisible, shown.interacting});
  }

  // The pixel around a point from the top-left corner; negative distances count from the far corner.
  QColor at(double x, double y) const {
    const auto pixel = [this](double distance) {
      const int whole = static_cast<int>(std::floor(distance * GetParam().scale));
      return distance < 0 ? picture.width() + whole : whole;
    };
    return picture.pixelColor(pixel(x), pixel(y));
  }

  void expect(double x, double y, QColor colour, double alpha) const {
    const QColor found = at(x, y);
    EXPECT_NEAR(found.alphaF(), alpha, 0.006) << x << ", " << y;
    EXPECT_NEAR(found.red(), colour.red(), 2) << x << ", " << y;
    EXPECT_NEAR(found.green(), colour.green(), 2) << x << ", " << y;
    EXPECT_NEAR(found.blue(), colour.blue(), 2) << x << ", " << y;
  }

  QImage picture;
};

TEST_P(LoupeDrawing, hasItsPartsInTheirPlacesAndColours) {
  const Case& shown = GetParam();
  const QColor base = shown.locked ? look::systemGrey : look::systemYellow;
  const double outline = shown.locked ? 0.55 : 0.95;
  for (const double near : {0.1, 1.6, -0.1, -1.6}) {
    expect(near, 40, base, outline);
    expect(40, near, base, outline);
  }
  EXPECT_EQ(at(40, 87).alpha(), 0);
  EXPECT_EQ(at(88, 88).alpha(), 0);
  EXPECT_EQ(at(40, 2.5).alpha(), 0);
  EXPECT_EQ(at(-2.5, 40).alpha(), 0);

  // Handles reach 5 points inwards from the edges.
  for (const double near : {1.0, 4.2, -1.0, -4.2}) {
    if (shown.locked) continue;
    expect(near, 87, base, 1);
    expect(87, near, base, 1);
  }
  EXPECT_EQ(at(4.2, 87).alpha() == 0, shown.locked);

  // The grounds of the chips, beside their symbols.
  expect(-20, 13, look::systemYellow, 0.95 * (shown.locked ? 0.35 : 1));
  expect(-33, 6, look::systemYellow, 0.95 * (shown.panelVisible ? 1 : 0.45));
  EXPECT_EQ(at(-22.5, 13).alpha(), 0);

  // The label stands in the top left corner, 7 points from the edge and 7 below.
  if (shown.interacting) {
    expect(9.5, 15, base, 1);
  } else {
    EXPECT_EQ(at(9.5, 15).alpha(), 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Looks, LoupeDrawing,
                         testing::Values(Case{1, false, true, false}, Case{1, true, true, false},
                                         Case{1, false, false, true}, Case{1, true, false, true},
                                         Case{1.5, false, true, true}, Case{1.5, true, false, false},
                                         Case{1.5, false, false, false}, Case{1.5, true, true, true}));

}  // namespace
}  // namespace velicor
