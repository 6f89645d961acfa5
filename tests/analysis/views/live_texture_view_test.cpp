#include "analysis/views/live_texture_view.h"

#include <gtest/gtest.h>
#include <QImage>

#include "analysis/metal_processor.h"
#include "analysis/notification_names.h"
#include "analysis/views/metal_texture_view.h"
#include "platform/dispatch/main_queue.h"
#include "support/main_loop.h"

namespace velicor {
namespace {

using notifications::NotificationCenter;
using test::waitUntil;

TEST(AspectFit, keepsTheProportionsInSingleFloats) {
  using Scale = std::array<float, 2>;
  EXPECT_EQ(aspectFitScale(200, 150, 512, 512), (Scale{0.75F, 1}));
  EXPECT_EQ(aspectFitScale(300, 100, 780, 256), (Scale{1, 3.0F / (780.0F / 256.0F)}));
  EXPECT_EQ(aspectFitScale(175, 175, 175, 175), (Scale{1, 1}));
  EXPECT_EQ(aspectFitScale(0, 150, 512, 512), (Scale{1, 1}));
  EXPECT_EQ(aspectFitScale(200, 150, 512, 0), (Scale{1, 1}));
  EXPECT_EQ(aspectFitScale(200, 150, 0.5F, 512), (Scale{1, 1}));
}

// Draws as the renderer does, and counts.
class CountingRenderer : public MetalTextureView::Renderer {
 public:
  using MetalTextureView::Renderer::Renderer;
  void draw(LiveTextureView& view) override {
    ++draws;
    if (const auto target = view.currentRenderTarget()) lastTarget = target->texture;
    MetalTextureView::Renderer::draw(view);
  }
  int draws = 0;
  std::weak_ptr<gpu::Texture> lastTarget;
};

class LiveTextureViewTest : public testing::Test {
 protected:
  void SetUp() override {
    view->resize(40, 20);
    view->setDelegate(renderer);
  }

  void post() { NotificationCenter::defaultCenter().post(velicorPreviewReady); }

  // Shown, with its first picture painted.
  void show() {
    host.resize(100, 50);
    host.show();
    ASSERT_TRUE(waitUntil([&] { return renderer->draws == 1 && lookAt(1, 1) != QColor(Qt::black).rgb(); }));
    settleDraws();
  }

  QRgb lookAt(int x, int y) {
    QImage picture(view->size(), QImage::Format_RGB32);
    picture.fill(Qt::black);
    view->render(&picture, {}, {}, QWidget::DrawChildren);
    return picture.pixel(x, y);
  }

  // Two whole trips through the device and back: what was going to be drawn has been.
  void settleDraws() {
    for (int trip = 0; trip < 2; ++trip) {
      bool back = false;
      const auto commands = device->makeCommandQueue()->makeCommandBuffer();
      commands->addCompletedHandler([&back](const gpu::CommandBuffer&) {
        dispatch::MainQueue::shared().async([&back] { back = true; });
      });
      commands->commit();
      ASSERT_TRUE(waitUntil([&] { return back; }));
      test::settle();
    }
  }

  std::shared_ptr<gpu::Texture> filled(int width, int height, std::byte blue) {
    auto made = device->makeTexture({gpu::PixelFormat::bgra8Unorm, width, height,
                                     gpu::TextureUsage::shaderRead, gpu::StorageMode::shared});
    std::vector<std::byte> pixels(static_cast<std::size_t>(width * height) * 4, std::byte{255});
    for (std::size_t i = 0; i < pixels.size(); i += 4)
      pixels[i] = blue;
    made->replace({{}, {width, height}}, pixels, static_cast<std::size_t>(width) * 4);
    return made;
  }

  std::shared_ptr<gpu::Device> device = gpu::systemDefaultDevice();
  std::shared_ptr<gpu::Texture> texture;
  std::shared_ptr<CountingRenderer> renderer =
      std::make_shared<CountingRenderer>(device, [this] { return texture; });
  QWidget host;
  LiveTextureView* view = new LiveTextureView(device, velicorPreviewReady, &host);
};

constexpr QRgb nearBlack = qRgb(5, 5, 5);

TEST_F(LiveTextureViewTest, aNotificationBringsTheTextureFittedInTheMiddle) {
  show();
  texture = filled(20, 20, std::byte{0});
  post();
  EXPECT_TRUE(waitUntil([&] { return lookAt(20, 10) == qRgb(255, 255, 0); }));
  EXPECT_EQ(lookAt(9, 10), nearBlack);
  EXPECT_EQ(lookAt(10, 0), qRgb(255, 255, 0));
  EXPECT_EQ(lookAt(29, 19), qRgb(255, 255, 0));
  EXPECT_EQ(lookAt(30, 10), nearBlack);
}

TEST_F(LiveTextureViewTest, aRepaintThatNobodyAskedForCostsNoDraw) {
  show();
  const int before = renderer->draws;
  for (int i = 0; i < 3; ++i)
    view->repaint();
  settleDraws();
  EXPECT_EQ(renderer->draws, before);
}

TEST_F(LiveTextureViewTest, notificationsDuringADrawLeadToOneMore) {
  show();
  const int before = renderer->draws;
  post();
  while (renderer->draws == before)
    test::settle();
  // Under way now, or just finished; whatever comes in one go is one draw.
  for (int i = 0; i < 10; ++i)
    post();
  settleDraws();
  EXPECT_GE(renderer->draws, before + 2);
  EXPECT_LE(renderer->draws, before + 3);
}

TEST_F(LiveTextureViewTest, hiddenItDrawsNothingUntilItIsShown) {
  show();
  view->hide();
  const int before = renderer->draws;
  post();
  settleDraws();
  EXPECT_EQ(renderer->draws, before);
  view->show();
  EXPECT_TRUE(waitUntil([&] { return renderer->draws == before + 1; }));
  host.hide();
  post();
  settleDraws();
  EXPECT_EQ(renderer->draws, before + 1);
}

TEST_F(LiveTextureViewTest, hiddenBeforeADrawThatWasAskedForItDrawsAndKeepsNothing) {
  show();
  const int before = renderer->draws;
  post();
  view->hide();
  settleDraws();
  EXPECT_EQ(renderer->draws, before);
  EXPECT_TRUE(renderer->lastTarget.expired());

  view->show();
  while (renderer->draws == before)
    test::settle();
  view->draw();  // under way, or just finished: either way there is one more to come
  view->setNeedsDisplay();
  const int shown = renderer->draws;
  view->hide();
  settleDraws();
  EXPECT_EQ(renderer->draws, shown);
  EXPECT_TRUE(renderer->lastTarget.expired());
}

TEST_F(LiveTextureViewTest, drawsAtOnceWhenAskedEvenUnseen) {
  view->draw();
  EXPECT_EQ(renderer->draws, 1);
  settleDraws();
  EXPECT_EQ(lookAt(5, 5), nearBlack);
}

TEST_F(LiveTextureViewTest, mayGoWhileItsDrawIsUnderWay) {
  view->draw();
  delete view;
  settleDraws();
  post();
  settleDraws();
  EXPECT_EQ(renderer->draws, 1);
}

TEST_F(LiveTextureViewTest, aViewOfAValueKeepsItsCoordinator) {
  const MetalTextureView value{device, velicorScopesReady, [this] { return texture; }};
  texture = filled(512, 512, std::byte{0});
  const std::unique_ptr<LiveTextureView> scope = value.makeView(value.makeCoordinator());
  scope->resize(200, 150);
  scope->draw();
  settleDraws();
  QImage picture(scope->size(), QImage::Format_RGB32);
  scope->render(&picture);
  EXPECT_EQ(picture.pixel(100, 75), qRgb(255, 255, 5));
  EXPECT_EQ(picture.pixel(20, 75), nearBlack);
}

}  // namespace
}  // namespace velicor
