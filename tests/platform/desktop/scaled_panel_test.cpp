#include <algorithm>
#include <cstdlib>
#include <memory>

#include <gtest/gtest.h>
#include <xcb/xcb.h>
#include <QPainter>
#include <QWidget>

#include "platform/desktop/desktop.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/desktop/panel.h"
#include "platform/desktop/pointer.h"
#include "support/main_loop.h"
#include "support/robot.h"
#include "support/x11_main.h"
#include "support/x_client.h"

namespace velicor::desktop {
namespace {

// Before the application object reads it.
[[maybe_unused]] const bool scaled = qputenv("QT_SCALE_FACTOR", "1.25");

using test::waitUntil;

class Coat : public QWidget {
 protected:
  void paintEvent(QPaintEvent*) override { QPainter(this).fillRect(rect(), QColor(0, 255, 0)); }
};

class ScaledPanelTest : public testing::Test {
 protected:
  // How many pixels of the screen are the coat's colour, within the rectangle and a margin around it.
  int coated(const DeviceRect& rect) {
    const auto word = [](int value) { return static_cast<std::int16_t>(value); };
    const auto size = [](int value) { return static_cast<std::uint16_t>(value); };
    auto* reply = xcb_get_image_reply(
        client.raw(),
        xcb_get_image(client.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, client.root(), word(rect.x - 5),
                      word(rect.y - 5), size(rect.width + 10), size(rect.height + 10), ~0U),
        nullptr);
    const auto* pixels = reinterpret_cast<const std::uint32_t*>(xcb_get_image_data(reply));
    const auto count = std::count_if(pixels, pixels + xcb_get_image_data_length(reply) / 4,
                                     [](std::uint32_t pixel) { return (pixel & 0xffffff) == 0x00ff00; });
    std::free(reply);
    return static_cast<int>(count);
  }

  std::unique_ptr<Desktop> desktop = std::move(*Desktop::open());
  test::XClient client{test::xServer().name()};
  test::Robot robot{test::xServer().name()};
};

TEST_F(ScaledPanelTest, theScreenIsMeasuredInPoints) {
  const Screen screen = desktop->screens().screens().at(0);
  EXPECT_EQ(screen.backingScaleFactor, 1.25);
  EXPECT_EQ(screen.frame, (DesktopRect{0, 0, 1152, 720}));
  EXPECT_EQ(screen.deviceFrame, (DeviceRect{0, 0, 1440, 900}));
}

// The toolkit thinks in whole points; the window must be, and be painted, to the pixel all the same.
TEST_F(ScaledPanelTest, everySizeIsExactAndPaintedToItsLastPixel) {
  Panel panel(*desktop, PanelKind::bypassing, {100, 100, 80, 80});
  panel.setContentView(std::make_unique<Coat>());
  panel.orderFront();
  for (int pixels = 100; pixels < 112; ++pixels) {
    const DeviceRect wanted{101 + pixels % 7, 203, pixels, pixels + 3};
    panel.setFrame(desktop->screens().layout().toDesktop(wanted));
    ASSERT_EQ(panel.deviceFrame(), wanted);
    EXPECT_TRUE(
        waitUntil([&] { return coated(wanted) == wanted.width * wanted.height; }, std::chrono::seconds(3)))
        << pixels << ": " << coated(wanted) << " of " << wanted.width * wanted.height;
  }
}

TEST_F(ScaledPanelTest, theMouseIsInPointsToo) {
  robot.moveTo({250, 100});
  EXPECT_EQ(desktop->pointer().position(), (DesktopPoint{250.5 / 1.25, 720 - 100.5 / 1.25}));
}

}  // namespace
}  // namespace velicor::desktop
