#include <QTest>
#include <QWidget>

#include "support/main_loop.h"
#include "support/x11_main.h"
#include "support/x_client.h"
#include "update/update_fixture.h"

namespace velicor::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class UpdateWindowTest : public UpdateFixture {
 protected:
  static void pressReturn() { QTest::keyClick(UpdateWindow::window(), Qt::Key_Return); }

  // The window's inner corner, once the manager has done all that it was asked.
  DevicePoint framedPlace() {
    settle();
    EXPECT_TRUE(client.findManager());
    return client.origin(windowID());
  }

  static xcb_window_t windowID() { return static_cast<xcb_window_t>(UpdateWindow::window()->winId()); }

  const WindowManager manager{xServer()};
  XClient client{xServer().name()};
};

TEST_F(UpdateWindowTest, IsOneWindowThatKeepsItsPlaceAndAnswersReturn) {
  checker.checkNow();
  QWidget* const window = UpdateWindow::window();
  ASSERT_TRUE(waitUntil([&] { return window->isActiveWindow(); }));
  EXPECT_EQ(window->windowTitle(), "Velicor Update");
  EXPECT_EQ(window->size(), QSize(420, 220));
  EXPECT_LE((window->geometry().center() - QPoint(720, 450)).manhattanLength(), 30);
  ASSERT_TRUE(reaches(Phase::failed));
  pressReturn();
  EXPECT_THAT(opener.opened, testing::ElementsAre("https://velicor.example"))
      << "not Close, though it is a button too";
  EXPECT_FALSE(window->isVisible());

  offer({{"version", "<b>2"}});
  EXPECT_EQ(UpdateWindow::window(), window);
  EXPECT_THAT(shown(), StartsWith("Velicor <b>2 is available / " + youHave + " / [Later]"));
  EXPECT_EQ(window->height(), 220);
  const DevicePoint before = framedPlace();
  client.move(windowID(), 100, 120);
  const DevicePoint place = framedPlace();
  ASSERT_LT(place.x, before.x - 300) << "the manager moves it, as for its user";
  ASSERT_TRUE(waitUntil([&] { return window->geometry().topLeft() == QPoint(place.x, place.y); }));
  click("Later");
  UpdateWindow::show();
  UpdateWindow::close();  // before the manager has framed it
  UpdateWindow::show();
  EXPECT_EQ(framedPlace(), place);
  ASSERT_TRUE(waitUntil([&] { return window->isActiveWindow(); }));

  pressReturn();
  EXPECT_EQ(checker.phase(), Phase::downloading);
}

TEST_F(UpdateWindowTest, FitsWhateverTheNotesAre) {
  const QString sentences =
      QString("A note of several sentences wraps instead of being cut off. ").repeated(4);
  offer({{"notes", QJsonArray{sentences, "Short"}}});
  QWidget* const window = UpdateWindow::window();
  EXPECT_GT(window->height(), 220);
  EXPECT_THAT(shown(), HasSubstr("• " + sentences.toStdString() + " / • Short / [Later]"));

  QJsonArray many{QString(5000, 'w')};
  while (many.size() < 5000)
    many.append("One of very many");
  offer({{"notes", many}, {"version", QString(3000, '1')}});
  EXPECT_EQ(window->width(), 420);
  EXPECT_LT(window->height(), 800);
  EXPECT_THAT(shown(),
              testing::AllOf(Not(HasSubstr(std::string(2500, 'w'))), EndsWith("[Later] / [Download*]")));
}

}  // namespace
}  // namespace velicor::test
