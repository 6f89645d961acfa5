// How the program begins and ends, what it keeps, and what it says.
#include <gmock/gmock.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "program/stage.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

constexpr DeviceRect screen{0, 0, 1280, 800};

int linesOf(const std::string& text) { return static_cast<int>(std::count(text.begin(), text.end(), '\n')); }

// Whole lines only.
std::vector<std::string> linesWith(const std::string& text, const std::string& part) {
  std::vector<std::string> result;
  std::size_t begin = 0;
  for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin)) {
    const std::string line = text.substr(begin, end - begin);
    if (line.find(part) != std::string::npos) result.push_back(line);
    begin = end + 1;
  }
  return result;
}

int numberAfter(const std::string& line, const std::string& name) {
  const std::size_t place = line.find(name);
  return place == std::string::npos ? -1 : std::stoi(line.substr(place + name.size()));
}

int brightestGreen(const QImage& image) {
  int brightest = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) brightest = std::max(brightest, image.pixelColor(x, y).green());
  }
  return brightest;
}

TEST(LifeTest, WithoutAnXServerItSaysSoInOneLine) {
  RunningVelicor velicor({.display = ":4711"});
  EXPECT_EQ(velicor.waitForExit(), 69);
  EXPECT_EQ(linesOf(velicor.log()), 1) << velicor.log();
}

TEST(LifeTest, InAWaylandSessionItSaysSoInOneLine) {
  const Stage stage(Surroundings::noManager);
  Launch launch = stage.launch();
  launch.environment = {"XDG_SESSION_TYPE=wayland", "WAYLAND_DISPLAY=wayland-0"};
  RunningVelicor velicor(launch);
  EXPECT_EQ(velicor.waitForExit(), 69);
  EXPECT_EQ(linesOf(velicor.log()), 1) << velicor.log();
}

TEST(LifeTest, TheFirstRunLeavesTheDefaultsAsSettings) {
  const Stage stage(Surroundings::windowManager);
  Launch launch = stage.launch();
  launch.withSettings = false;
  RunningVelicor velicor(launch);
  ASSERT_TRUE(velicor.waitForLog("capture running")) << velicor.log();
  EXPECT_EQ(velicor.terminate(), 0) << velicor.log();
  const QJsonObject values =
      QJsonDocument::fromJson(QByteArray::fromStdString(velicor.settings())).object().value("values").toObject();
  EXPECT_EQ(values.value("mode"), QJsonValue(1));
  EXPECT_EQ(values.value("fps"), QJsonValue(15));
  EXPECT_EQ(values.value("locked"), QJsonValue(false));
  EXPECT_EQ(values.value("opacity").toObject().value("double").toString(), "1");
  EXPECT_EQ(values.value("palette").toArray().size(), 11);
}

TEST(LifeTest, TheLossOfTheServerEndsItWithAnErrorAndKeepsTheSettings) {
  auto stage = std::make_unique<Stage>(Surroundings::windowManager);
  Launch launch = stage->launch();
  launch.withSettings = false;
  RunningVelicor velicor(launch);
  ASSERT_TRUE(velicor.waitForLog("capture running")) << velicor.log();
  const std::string before = velicor.log();
  stage.reset();
  EXPECT_EQ(velicor.waitForExit(), 70);
  EXPECT_EQ(velicor.log().substr(before.size()), "velicor: the X server went away\n");
  EXPECT_NE(velicor.settings().find("\"mode\": 1"), std::string::npos) << velicor.settings();
}

// The connection that redirects the windows: the server ends it, and none of the others.
bool endCaptureConnection(XClient& killer) {
  std::vector<std::uint32_t> bases;
  killer.resources([&](std::uint32_t base) { return bases.push_back(base), false; });
  const auto redirects = [&](std::uint32_t base) {
    return killer.resources([&](std::uint32_t each) { return each == base; }).contains("CompositeClientSubwindows");
  };
  const auto capture = std::find_if(bases.begin(), bases.end(), redirects);
  if (capture == bases.end()) return false;
  for (std::uint32_t i = 1; i < 64; ++i)
    xcb_kill_client(killer.raw(), *capture + i);  // a resource of its, where there is one of this number
  killer.sync();
  return true;
}

// As from another machine: the server shows it no screen, and keeps most extensions from it.
TEST(LifeTest, WhereTheServerDoesNotTrustItItSaysThatItMayNotSeeTheScreen) {
  const XServer server("1280x800x24", {"+extension", "SECURITY"});
  const QTemporaryDir folder;
  const QString cookies = folder.filePath("cookies");
  ASSERT_EQ(QProcess::execute("xauth", {"-q", "-f", cookies, "generate",
                                        QString::fromStdString(server.name()), ".", "untrusted"}),
            0);
  RunningVelicor velicor({.display = server.name(), .environment = {"XAUTHORITY=" + cookies.toStdString()}});
  EXPECT_TRUE(velicor.waitForLog("capture failed: The X server does not let this program read the screen"))
      << velicor.log();
  EXPECT_EQ(velicor.terminate(), 0) << velicor.log();
}

TEST(LifeTest, TheCaptureGoesOnWhenItsConnectionIsEnded) {
  Stage stage(Surroundings::windowManager);
  const xcb_window_t ground = stage.painter().showColour(screen, 0xC29682);
  stage.painter().lower(ground);
  Launch launch = stage.launch();
  launch.mode = 2;
  RunningVelicor velicor(launch);
  ASSERT_TRUE(stage.shows(loupeCentre, QColor(0xED, 0xC5, 0x18), 2)) << velicor.log();
  waitUntil([] { return false; }, std::chrono::seconds(1));  // ended sooner, it would not be tried again
  ASSERT_TRUE(endCaptureConnection(stage.painter()));
  ASSERT_TRUE(velicor.waitForLog("goes on with another one")) << velicor.log();
  stage.painter().setColour(ground, 0x999999);
  EXPECT_TRUE(stage.shows(loupeCentre, QColor(0xEB, 0xD1, 0x1A), 2)) << velicor.log();
  EXPECT_EQ(velicor.terminate(), 0) << velicor.log();
}

class StatisticsTest : public testing::Test {
 protected:
  Stage stage_{Surroundings::windowManagerAndCompositor};
};

TEST_F(StatisticsTest, AStillScreenCostsNoFrameAndAMovingOneAtMostTheRate) {
  const xcb_window_t window = stage_.painter().showColour(screen, 0x999999);
  Launch launch = stage_.launch();
  launch.environment = {"VELICOR_STATS=1"};
  RunningVelicor velicor(launch);
  EXPECT_TRUE(velicor.waitForLog("Velicor stats/s: \n")) << velicor.log();

  // Changes, faster than the frame rate, until two reports have come. What the second counts happened since
  // it was last known that there was no first one.
  const std::size_t before = velicor.log().size();
  std::vector<std::string> reports;
  auto countedFrom = std::chrono::steady_clock::now();
  for (std::uint32_t i = 0; reports.size() < 2 && i < 4000; ++i) {
    const auto lookedAt = std::chrono::steady_clock::now();
    reports = linesWith(velicor.log().substr(before), "captured=");
    if (reports.empty()) countedFrom = lookedAt;
    stage_.painter().fill(window, {600, 350, 80, 100}, i * 0x050505 % 0xFFFFFF);
    waitUntil([] { return false; }, std::chrono::milliseconds(5));
  }
  const std::chrono::duration<double> counted = std::chrono::steady_clock::now() - countedFrom;
  ASSERT_EQ(reports.size(), 2u) << velicor.log();
  const int captured = numberAfter(reports[1], "captured=");
  EXPECT_GE(captured, 1);
  EXPECT_LE(captured, 30 * counted.count() + 2);
  EXPECT_GE(numberAfter(reports[1], "drawn="), 1);
}

TEST_F(StatisticsTest, TheDumpsShowWhatWasUnderTheLoupe) {
  constexpr std::uint32_t lightSkin = 0xC29682;
  const xcb_window_t window = stage_.painter().showColour(screen, lightSkin);
  Launch launch = stage_.launch();
  launch.mode = 1;
  const QTemporaryDir folder;
  const QString prefix = folder.filePath("v");
  launch.environment = {"VELICOR_DUMP=" + prefix.toStdString()};
  RunningVelicor velicor(launch);
  ASSERT_TRUE(velicor.waitForLog("capture running")) << velicor.log();
  for (std::uint32_t i = 0; !velicor.waitForLog("dumped parade", std::chrono::milliseconds(15)) && i < 4000;
       ++i) {
    stage_.painter().fill(window, {700, 480, 2, 2}, i % 2 == 0 ? 0x808080 : 0x909090);
  }

  const QImage loupe(prefix + "-loupe.png");
  ASSERT_EQ(loupe.size(), QSize(175, 175)) << velicor.log();
  // The variable also changes the modes, from three seconds on, which may be before the 60th frame.
  EXPECT_THAT(loupe.pixelColor(20, 20), testing::AnyOf(QColor(0xFF, 0xF2, 0x00), QColor(0xED, 0xC5, 0x18)));
  EXPECT_EQ(loupe.pixelColor(87, 87), loupe.pixelColor(20, 20));

  // Cb = −0.0590 and Cr = 0.0899 lie at (225.8, 210.0) of the plane's 512 × 512 pixels; a bin is two wide.
  const QImage vectorscope(prefix + "-vectorscope.png");
  ASSERT_EQ(vectorscope.size(), QSize(512, 512));
  EXPECT_GT(brightestGreen(vectorscope.copy(222, 206, 8, 8)), 200);
  EXPECT_EQ(brightestGreen(vectorscope.copy(282, 206, 8, 8)), 0);

  // Level 194 of red lies 61 rows from the top, 150 of green 105, 130 of blue 125.
  const QImage parade(prefix + "-parade.png");
  ASSERT_EQ(parade.size(), QSize(780, 256));
  EXPECT_GT(parade.pixelColor(100, 255 - 194).red(), 150);
  EXPECT_GT(parade.pixelColor(262 + 100, 255 - 150).green(), 150);
  EXPECT_GT(parade.pixelColor(524 + 100, 255 - 130).blue(), 150);
  EXPECT_EQ(parade.pixelColor(100, 20), QColor(0, 0, 0));

  // The panel in each mode; the last one stays.
  ASSERT_TRUE(velicor.waitForLog("dumped view panel-original")) << velicor.log();
  EXPECT_THAT(linesWith(velicor.log(), "dumped view"),
              testing::ElementsAre(testing::EndsWith("panel-skin"), testing::EndsWith("panel-exposure"),
                                   testing::EndsWith("panel-original")));
  const QImage panel(prefix + "-panel-skin.png");
  EXPECT_FALSE(panel.isNull());
  EXPECT_NE(panel, QImage(prefix + "-panel-exposure.png"));
  EXPECT_EQ(velicor.terminate(), 0) << velicor.log();
  EXPECT_NE(velicor.settings().find("\"mode\": 0"), std::string::npos) << velicor.settings();
}

}  // namespace
}  // namespace velicor::test
