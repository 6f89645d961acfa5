#include <QTest>
#include <QWidget>

#include "support/main_loop.h"
#include "support/x11_main.h"
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

  const WindowManager manager{xServer()};
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

  window->move(100, 120);
  offer({{"version", "<b>2"}});
  EXPECT_EQ(UpdateWindow::window(), window);
  const QPoint place = window->pos();
  EXPECT_THAT(shown(), StartsWith("Velicor <b>2 is available / " + youHave + " / [Later]"));
  EXPECT_EQ(window->height(), 220);
  click("Later");
  UpdateWindow::show();
  ASSERT_TRUE(waitUntil([&] { return window->isActiveWindow(); }));
  EXPECT_EQ(window->pos(), place);

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
