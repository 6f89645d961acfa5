#include <csignal>
#include <fstream>
#include <functional>

#include <sys/resource.h>
#include <QNetworkReply>
#include <QWidget>

#include "support/main_loop.h"
#include "update/update_fixture.h"

namespace velicor::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr const char* image = "velicor.example/Velicor-1.3.dmg";
constexpr const char* unreachable =
    "Couldn't reach velicor.example. Check your internet connection and try again.";
constexpr const char* unfinished = "The download didn't finish. You can get it from velicor.example instead.";

class UpdateCheckerTest : public UpdateFixture {};

TEST_F(UpdateCheckerTest, FromTheQuestionToTheOpenedImage) {
  serveFeed(WebSite::answer("no such page", "404 Not Found\r\nSet-Cookie: seen=1; Path=/"));
  checker.checkNow();
  EXPECT_EQ(shown(), "Checking for updates…");
  EXPECT_EQ(settings.date("update.lastCheck"), now) << "before any answer";
  ASSERT_TRUE(reaches(Phase::failed));

  offer({{"notes", QJsonArray{"First", "Second"}}});
  EXPECT_EQ(shown(),
            "Velicor 1.3 is available / " + youHave + " / • First / • Second / [Later] / [Download*]");
  EXPECT_THAT(site.requests.back().toLower(),
              testing::AllOf(HasSubstr("cache-control: no-cache"), HasSubstr("user-agent: velicor\r\n"),
                             HasSubstr("accept-language: *\r\n"), testing::Not(HasSubstr("cookie"))));

  for (const std::string& content : {std::string("first image"), std::string(300'000, 'x')}) {
    const QByteArray whole = WebSite::answer(QByteArray::fromStdString(content));
    const std::size_t before = site.requests.size();
    site.holdsConnections = true;
    site.serve(image, whole.chopped(5));
    UpdateWindow::show();
    checker.download();
    ASSERT_TRUE(waitUntil([&] { return site.requests.size() > before; }));
    EXPECT_EQ(shown(), "Velicor 1.3 is available / " + youHave + " / • First / • Second / Downloading…");
    UpdateWindow::close();
    clock.advance(119s);
    site.sendMore(whole.last(5));
    ASSERT_TRUE(reaches(Phase::mounted));
    std::ifstream file(caches / "Updates" / "Velicor-1.3.dmg");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), content);
    EXPECT_THAT(updatesFolder(), ElementsAre("Velicor-1.3.dmg"));
    EXPECT_EQ(opener.opened.back(), caches / "Updates" / "Velicor-1.3.dmg");
    site.hangUp();
  }
  UpdateWindow::show();
  EXPECT_THAT(
      shown(),
      HasSubstr("Drag Velicor into your Applications folder, replacing the old copy, then open it again. "
                "Quit Velicor first. / [Quit Velicor*]"));
  EXPECT_THAT(log.lines(), IsEmpty());
}

// The answer of the feed, and the phase that a manual check ends with.
TEST_F(UpdateCheckerTest, FeedsThatOfferNothing) {
  const auto newerSystem = QJsonObject{{"minimumSystemVersion", "9999"}};
  for (const QByteArray& answer : {feed({{"build", 1}, {"version", "9.9"}}), feed(newerSystem)}) {
    serveFeed(answer);
    checker.checkNow();
    EXPECT_TRUE(reaches(Phase::upToDate));
    EXPECT_EQ(shown(), "Velicor " + running + " is the latest version. / [OK*]");
  }
  EXPECT_THAT(log.lines(), IsEmpty());
  serveFeed(feed({{"url", "https://elsewhere.example/ü\u0085.dmg"}, {"minimumSystemVersion", "9999"}}));
  checker.checkNow();
  EXPECT_TRUE(reaches(Phase::upToDate));
  EXPECT_THAT(
      log.lines(),
      ElementsAre(
          "update error: ignoring update: https://elsewhere.example/%C3%BC%C2%85.dmg is not on our site"));
}

TEST_F(UpdateCheckerTest, FeedsThatFail) {
  const QByteArray good = feed();
  const std::vector<std::function<void()>> hindrances{
      [&] {
        serveFeed(feed({{"build", "2"}}));
      },
      [&] { serveFeed(WebSite::answer(good + QByteArray(1 << 20, ' '))); },
      [&] { serveFeed(good.chopped(1)); },
      [&] { serveFeed(WebSite::redirection("https://elsewhere.example/appcast.json")); },
      [&] { serveFeed(WebSite::redirection("http://velicor.example/moved")); },
      [&] { serveFeed(WebSite::redirection("https://velicor.example/appcast.json")); },
      [&] { site.identity = WebSite::Identity::otherName; },
      [&] { site.identity = WebSite::Identity::selfSigned; },
  };
  site.serve("velicor.example/moved", good);
  site.serve("elsewhere.example/appcast.json", good);
  for (std::size_t i = 0; i < hindrances.size(); ++i) {
    serveFeed(good);
    hindrances[i]();
    site.network().clearConnectionCache();
    checker.checkNow();
    EXPECT_TRUE(reaches(Phase::failed)) << i;
    EXPECT_EQ(shown(), std::string("Update / ") + unreachable + " / [Close] / [Open velicor.example*]") << i;
  }
  EXPECT_THAT(site.tunnels, testing::Each(QByteArray("velicor.example:443")));
  EXPECT_THAT(log.lines(), IsEmpty());

  site.identity = WebSite::Identity::product;
  serveFeed(WebSite::redirection("https://www.velicor.example/moved"));
  site.serve("www.velicor.example/moved", QByteArray(good).replace("200 OK", "500 Internal Server Error"));
  checker.checkNow();
  EXPECT_TRUE(reaches(Phase::offer)) << "to the other name of the site, whatever the status code";
}

TEST_F(UpdateCheckerTest, PatienceEnds) {
  // What the newest request has heard from the server.
  int signs = 0;
  const auto hears = [&](int expected) {
    return waitUntil([&signs, expected] { return signs >= expected; });
  };
  const auto sends = [&](const char* address, const QByteArray& part, const std::function<void()>& ask) {
    const std::size_t before = site.requests.size();
    site.holdsConnections = true;
    site.serve(address, part);
    ask();
    signs = 0;
    auto* reply = site.network().findChildren<QNetworkReply*>().last();
    QObject::connect(reply, &QNetworkReply::metaDataChanged, reply, [&signs] { ++signs; });
    QObject::connect(reply, &QNetworkReply::readyRead, reply, [&signs] { ++signs; });
    ASSERT_TRUE(waitUntil([&] { return site.requests.size() > before; }));
  };
  constexpr const char* feedAddress = "velicor.example/appcast.json";
  sends(feedAddress, {}, [&] { checker.checkNow(); });
  clock.advance(9900ms);
  EXPECT_EQ(checker.phase(), Phase::checking);
  clock.advance(100ms);
  EXPECT_EQ(checker.phase(), Phase(Phase::failed, unreachable));

  sends(feedAddress, "HTTP/1.1 200 OK\r\n", [&] { checker.checkNow(); });
  for (int piece = 0; piece < 6; ++piece) {
    EXPECT_EQ(checker.phase(), Phase::checking) << "a server that says something now and then";
    site.sendMore(piece == 0 ? "\r\n" : " ");
    ASSERT_TRUE(hears(piece + 1));
    clock.advance(9900ms);
  }
  clock.advance(600ms);
  EXPECT_EQ(checker.phase(), Phase(Phase::failed, unreachable)) << "but not for ever";
  site.hangUp();

  site.holdsConnections = false;
  offer();
  sends(image, "HTTP/1.1 200 OK\r\n\r\nabc", [&] { checker.download(); });
  ASSERT_TRUE(hears(2));
  clock.advance(120s);
  EXPECT_EQ(checker.phase(), Phase(Phase::failed, unfinished));
  EXPECT_THAT(log.lines(), ElementsAre("update error: download failed: the request timed out"));
  EXPECT_THAT(updatesFolder(), IsEmpty());
}

TEST_F(UpdateCheckerTest, DownloadsThatFail) {
  const QByteArray good = WebSite::answer(QByteArray(200'000, 'x'));
  // Files can't grow beyond a size: as on a disk that is full.
  rlimit usual{};
  getrlimit(RLIMIT_FSIZE, &usual);
  const rlimit small{100'000, usual.rlim_max};
  std::signal(SIGXFSZ, SIG_IGN);
  struct Case {
    const char* logged;
    std::function<void()> hinder;
    QJsonObject entry = {};
    std::vector<std::string> left = {};
  };
  const std::vector<std::string> whole{"Velicor-1.3.dmg"};
  const std::vector<Case> cases{
      {"bad server response: status 404",
       [&] { site.serve(image, WebSite::answer("gone", "404 \x1b[31mNot Found")); }},
      {"bad server response: status 206",
       [&] { site.serve(image, WebSite::answer("part", "206 Partial Content")); }},
      {"closed", [&] { site.serve(image, good.chopped(1)); }},
      {"redirected to https://elsewhere.example/x",
       [&] { site.serve(image, WebSite::redirection("https://elsewhere.example/x")); }},
      {"can't name a file", [] {}, {{"version", "../../1.3"}}},
      {"file not found: no program for it", [&] { opener.works = false; }, {}, whole},
      {"too large", [&] { setrlimit(RLIMIT_FSIZE, &small); }, {}, whole},
      {"Is a directory",
       [&] {
         std::filesystem::remove_all(caches);
         std::filesystem::create_directories(caches / "Updates" / "Velicor-1.3.dmg");
       },
       {},
       whole},
      {"caches",
       [&] { std::filesystem::remove_all(caches), std::ofstream(caches) << "a file in the folder's place"; }},
  };
  for (const Case& one : cases) {
    offer(one.entry);
    site.serve(image, good);
    opener.works = true;
    one.hinder();
    const std::size_t before = log.lines().size();
    checker.download();
    EXPECT_TRUE(reaches(Phase::failed)) << one.logged;
    setrlimit(RLIMIT_FSIZE, &usual);
    EXPECT_EQ(checker.phase().message, unfinished);
    ASSERT_THAT(log.lines(), SizeIs(before + 1)) << one.logged;
    EXPECT_THAT(log.lines().back(),
                testing::AllOf(StartsWith("update error: download failed: "), HasSubstr(one.logged)));
    EXPECT_THAT(updatesFolder(), testing::ElementsAreArray(one.left))
        << one.logged << ": nothing half done stays";
    const std::filesystem::path file = caches / "Updates" / "Velicor-1.3.dmg";
    if (std::filesystem::is_regular_file(file)) {
      EXPECT_EQ(std::filesystem::file_size(file), 200'000U) << one.logged;
    }
  }
  checker.openInBrowser();
  EXPECT_EQ(opener.opened.back(), "https://velicor.example/Velicor-1.3.dmg");
}

TEST_F(UpdateCheckerTest, ChecksByItselfOnceADay) {
  const auto day = 86400s;
  const auto asksAt = [&](settings::Date time) {
    const auto running = [&] { return site.network().findChildren<QNetworkReply*>().size(); };
    const auto before = running();
    now = time;
    checker.checkAtLaunch();
    return running() > before;
  };
  EXPECT_TRUE(asksAt(start));
  EXPECT_TRUE(waitUntil([&] { return log.lines().size() == 1; }));
  EXPECT_THAT(log.lines(), ElementsAre(StartsWith("update info: update check failed: ")));
  EXPECT_EQ(UpdateWindow::window(), nullptr);
  EXPECT_EQ(checker.phase(), Phase::checking);
  serveFeed(feed());
  EXPECT_FALSE(asksAt(start + day - 1s)) << "a failed check counts";
  EXPECT_TRUE(asksAt(start + day));
  EXPECT_TRUE(reaches(Phase::offer));
  EXPECT_EQ(log.lines().back(), "update info: offering 1.3 (build 2)");
  ASSERT_TRUE(UpdateWindow::window()->isVisible());

  click("Later");
  EXPECT_FALSE(UpdateWindow::window()->isVisible());
  EXPECT_EQ(checker.phase(), Phase::offer);
  EXPECT_TRUE(checker.release());
  EXPECT_EQ(settings.date("update.snoozeUntil"), now + day);
  settings.setDate("update.snoozeUntil", start + 3 * day);
  EXPECT_FALSE(asksAt(start + 3 * day - 1s));
  offer();  // asked for by the user: whatever the dates say
  settings.remove("update.lastCheck");
  EXPECT_TRUE(asksAt(start + 3 * day));
}

TEST_F(UpdateCheckerTest, TheCheckThatEndsLastDecides) {
  site.holdsConnections = true;
  serveFeed({});
  checker.checkAtLaunch();
  ASSERT_TRUE(waitUntil([&] { return site.requests.size() == 1; }));
  site.holdsConnections = false;
  serveFeed(feed({{"build", 1}}));
  checker.checkNow();
  EXPECT_TRUE(reaches(Phase::upToDate));
  site.sendMore(feed());
  EXPECT_TRUE(reaches(Phase::offer));
}

}  // namespace
}  // namespace velicor::test
