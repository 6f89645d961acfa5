#include <cstring>
#include <vector>

#include <gmock/gmock.h>

#include "platform/gpu/device_fixture.h"

namespace velicor::gpu::test {
namespace {

class DrawablesTest : public DeviceTest {
 protected:
  // Draws one plain grey into the drawable and presents it; returns when it is done.
  void draw(const std::shared_ptr<Drawable>& drawable, int grey) {
    const auto commands = queue_->makeCommandBuffer();
    const double value = grey / 255.0;
    commands->makeRenderEncoder({drawable->texture(), {value, value, value, 1}})->endEncoding();
    commands->present(drawable);
    commands->commit();
    commands->waitUntilCompleted();
  }

  // The one grey that all pixels have, or −1.
  static int greyOf(const Picture& picture) {
    const int grey = std::to_integer<int>(picture.bytes()[0]);
    for (int y = 0; y < picture.height(); ++y) {
      const std::byte* row = picture.bytes() + static_cast<std::size_t>(y) * picture.bytesPerRow();
      for (int x = 0; x < picture.width() * 4; ++x) {
        if (std::to_integer<int>(row[x]) != (x % 4 == 3 ? 255 : grey)) return -1;
      }
    }
    return grey;
  }

  std::shared_ptr<Drawables> drawables_ = device_->makeDrawables();
};

TEST_P(DrawablesTest, TheNewestFinishedPictureIsInFront) {
  EXPECT_EQ(drawables_->front(), nullptr);
  for (const int grey : {10, 20, 30}) {
    draw(drawables_->next(7, 5), grey);
    EXPECT_EQ(greyOf(*drawables_->front()), grey);
  }
}

TEST_P(DrawablesTest, APictureStaysAsItIsWhileItIsHeld) {
  draw(drawables_->next(4, 4), 10);
  auto painted = drawables_->front();
  draw(drawables_->next(4, 4), 20);
  EXPECT_EQ(drawables_->next(4, 4), nullptr);
  EXPECT_EQ(greyOf(*painted), 10);
  painted = nullptr;
  draw(drawables_->next(4, 4), 30);
  EXPECT_EQ(greyOf(*drawables_->front()), 30);
}

TEST_P(DrawablesTest, ADroppedDrawableGivesItsTargetBack) {
  draw(drawables_->next(4, 4), 10);
  auto unused = drawables_->next(4, 4);
  EXPECT_EQ(drawables_->next(4, 4), nullptr);
  unused = nullptr;
  EXPECT_NE(drawables_->next(4, 4), nullptr);
  EXPECT_EQ(greyOf(*drawables_->front()), 10);
}

TEST_P(DrawablesTest, FollowsTheViewsSize) {
  draw(drawables_->next(4, 4), 10);
  draw(drawables_->next(9, 3), 20);
  EXPECT_EQ(drawables_->front()->width(), 9);
  EXPECT_EQ(greyOf(*drawables_->front()), 20);
  EXPECT_EQ(drawables_->next(0, 4), nullptr);
  EXPECT_EQ(drawables_->next(4, maxTextureSide + 1), nullptr);
}

TEST_P(DrawablesTest, APictureOutlivesItsView) {
  draw(drawables_->next(4, 4), 10);
  const auto picture = drawables_->front();
  drawables_ = nullptr;
  EXPECT_EQ(greyOf(*picture), 10);
}

INSTANTIATE_TEST_SUITE_P(Devices, DrawablesTest, testing::ValuesIn(allDevices()), deviceName);

}  // namespace
}  // namespace velicor::gpu::test
