// What a start with options does: with a program that runs, without one, and without a display.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/base/product.h"
#include "program/stage.h"

namespace velicor::test {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr DeviceRect screen{0, 0, 1280, 800};
constexpr std::uint32_t lightSkin = 0xC29682;
constexpr QColor unchanged(0xC2, 0x96, 0x82);
constexpr QColor onTheLine(0xFF, 0xF2, 0x00);

Launch with(Launch launch, std::vector<std::string> arguments) {
  launch.arguments = std::move(arguments);
  return launch;
}

TEST(CommandLineTest, OptionsReachTheProgramThatRuns) {
  Stage stage(Surroundings::windowManagerAndCompositor);
  stage.painter().showColour(screen, lightSkin);
  const Launch launch = stage.launch();
  RunningVelicor velicor(launch);
  ASSERT_TRUE(stage.shows(loupeCentre, onTheLine)) << velicor.log();
  const auto say = [&](std::vector<std::string> arguments) {
    RunningVelicor second(with(launch, std::move(arguments)));
    EXPECT_EQ(second.waitForExit(), 0);
    EXPECT_EQ(second.log(), "");
  };

  say({"--mode", "original"});
  EXPECT_TRUE(stage.shows(loupeCentre, unchanged));
  EXPECT_TRUE(stage.shows(onFrameLine(loupeAtStart), frameYellow, frameTolerance + 10));
  say({"--toggle"});
  EXPECT_TRUE(stage.shows(onFrameLine(loupeAtStart), unchanged)) << "hidden";
  say({"--mode=skin"});
  EXPECT_TRUE(stage.shows(loupeCentre, onTheLine)) << "a mode is asked for to be seen";
  say({"--quit"});
  EXPECT_EQ(velicor.waitForExit(), 0) << velicor.log();
  EXPECT_THAT(velicor.settings(), HasSubstr("\"mode\": 1"));
}

TEST(CommandLineTest, WithoutOneThatRunsOptionsSayHowItStarts) {
  Stage stage(Surroundings::windowManager);
  RunningVelicor none(with(stage.launch(), {"--quit"}));
  EXPECT_EQ(none.waitForExit(), 0);
  EXPECT_EQ(none.log(), "velicor: nothing to end: it doesn't run on this display\n");

  // As a session manager starts again what ran before.
  RunningVelicor velicor(with(stage.launch(), {"--mode", "exposure", "-session", "10a1b2c3"}));
  ASSERT_TRUE(velicor.waitForLog("capture running")) << velicor.log();
  EXPECT_EQ(velicor.terminate(), 0);
  EXPECT_THAT(velicor.settings(), HasSubstr("\"mode\": 2"));
}

TEST(CommandLineTest, TheReportDescribesTheSurroundingsAndNothingPrivate) {
  Stage stage(Surroundings::windowManagerAndCompositor);
  Launch launch = with(stage.launch(), {"--diagnose"});
  launch.environment = {"QT_SCALE_FACTOR=2"};
  RunningVelicor velicor(launch);
  EXPECT_EQ(velicor.waitForExit(), 0) << velicor.log();
  const std::string version = "Velicor " + std::string(product::version());
  EXPECT_THAT(velicor.output(),
              AllOf(StartsWith(version), HasSubstr("Composite 0.4"), HasSubstr("1280x800 pixels at (0, 0), scale 2"),
                    HasSubstr("window manager: Openbox\n"), HasSubstr("compositing manager: picom\n"),
                    HasSubstr("status area: none\n"), ContainsRegex("analysis device: [^n\n]"),
                    HasSubstr("settings: present"), Not(HasSubstr(velicor.folder()))));

  RunningVelicor alone({.display = ":4711", .withSettings = false, .arguments = {"--diagnose"}});
  EXPECT_EQ(alone.waitForExit(), 0);
  EXPECT_THAT(alone.output(), AllOf(StartsWith(version), HasSubstr("X server: none"), ContainsRegex("analysis device: [^n\n]"),
                                    HasSubstr("settings: absent")));
}

TEST(CommandLineTest, AnswersAndRefusesWithoutADisplay) {
  const struct {
    std::vector<std::string> arguments;
    int code;
    std::string text;  // on standard output, or as the error
  } cases[] = {{{"--help"}, 0, "Usage: velicor"},
               {{"--version"}, 0, "Velicor " + std::string(product::version()) + "\n"},
               {{"--colour"}, 64, "velicor: unknown argument \"--colour\""},
               {{"--version", "now"}, 64, "velicor: unknown argument \"now\""},
               {{"--version=1"}, 64, "velicor: unknown argument \"--version=1\""},
               {{"--mode", "blue"}, 64, "velicor: unknown mode \"blue\""},
               {{"--mode"}, 64, "velicor: no MODE after \"--mode\""},
               {{"--toggle", "--quit"}, 64, "velicor: one option at a time, not also \"--quit\""},
               {{""}, 64, "velicor: unknown argument \"\""}};
  std::string said, silent;
  for (const auto& expected : cases) {
    RunningVelicor velicor({.display = "", .arguments = expected.arguments});
    EXPECT_EQ(velicor.waitForExit(), expected.code) << expected.arguments.front();
    (expected.code == 0 ? said : silent) = velicor.output();
    (expected.code == 0 ? silent : said) = velicor.log();
    EXPECT_THAT(said, StartsWith(expected.text));
    EXPECT_EQ(silent, "");
  }
}

}  // namespace
}  // namespace velicor::test
