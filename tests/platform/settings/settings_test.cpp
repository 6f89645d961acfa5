#include "platform/settings/settings.h"

#include <cmath>
#include <csignal>
#include <fstream>
#include <functional>
#include <limits>
#include <sstream>

#include <gmock/gmock.h>
#include <sys/fsuid.h>
#include <sys/resource.h>
#include <unistd.h>

#include <QTemporaryDir>

#include "platform/settings/settings_file.h"
#include "support/log_recorder.h"
#include "support/manual_clock.h"

namespace velicor::settings {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;
namespace fs = std::filesystem;

class SettingsTest : public testing::Test {
 protected:
  std::string written() const {
    std::ifstream stream(file);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
  }

  void write(const std::string& text) const {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << text;
  }

  QTemporaryDir folder;
  fs::path file = fs::path(folder.path().toStdString()) / "config" / "velicor" / "settings.json";
  test::ManualClock clock;
  test::LogRecorder log;
};

TEST_F(SettingsTest, EveryTypeComesBackAsWhatItWas) {
  const Date now = Date(std::chrono::nanoseconds(1'700'000'000'123'456'789));
  constexpr std::int64_t large = (std::int64_t{1} << 62) + 1;  // not a double
  {
    Settings settings(file, clock);
    settings.setBoolean("yes", true);
    settings.setInteger("large", large);
    settings.setReal("whole", 1.0);
    settings.setReal("tenth", 0.1);
    settings.setReal("nan", std::numeric_limits<double>::quiet_NaN());
    settings.setReal("low", -std::numeric_limits<double>::infinity());
    settings.setReal("negative zero", -0.0);
    settings.setReal("tiny", std::numeric_limits<double>::denorm_min());
    settings.setString("text", "ein „Wort“\n");
    settings.setDate("date", now);
    settings.setStringList("list", {"#FFF200", ""});
    settings.setStringList("empty", {});
  }
  const Settings read(file, clock);
  EXPECT_THAT(read.boolean("yes"), Optional(true));
  EXPECT_THAT(read.integer("large"), Optional(large));
  EXPECT_THAT(read.real("whole"), Optional(1.0));
  EXPECT_THAT(read.real("tenth"), Optional(0.1));
  EXPECT_TRUE(std::isnan(read.real("nan").value_or(0)));
  EXPECT_THAT(read.real("low"), Optional(-std::numeric_limits<double>::infinity()));
  EXPECT_TRUE(std::signbit(read.real("negative zero").value_or(1)));
  EXPECT_THAT(read.real("tiny"), Optional(std::numeric_limits<double>::denorm_min()));
  EXPECT_THAT(read.string("text"), Optional(std::string("ein „Wort“\n")));
  EXPECT_THAT(read.date("date"), Optional(now));
  EXPECT_THAT(read.stringList("list"), Optional(ElementsAre("#FFF200", "")));
  EXPECT_THAT(read.stringList("empty"), Optional(IsEmpty()));
}

TEST_F(SettingsTest, TypesNeverBlur) {
  {
    Settings settings(file, clock);
    settings.setBoolean("boolean", true);
    settings.setInteger("integer", 1);
    settings.setReal("real", 1.0);
    settings.setString("string", "1");
    settings.setValue("mixed", List{Value("a"), Value(std::int64_t{1})});
    settings.setDate("date", Date(1ns));
  }
  const Settings read(file, clock);
  for (const std::string key : {"boolean", "integer", "real", "string", "mixed", "date", "missing"}) {
    EXPECT_EQ(read.boolean(key).has_value(), key == "boolean") << key;
    EXPECT_EQ(read.integer(key).has_value(), key == "integer") << key;
    EXPECT_EQ(read.real(key).has_value(), key == "real") << key;
    EXPECT_EQ(read.number(key).has_value(), key == "integer" || key == "real") << key;
    EXPECT_EQ(read.string(key).has_value(), key == "string") << key;
    EXPECT_EQ(read.date(key).has_value(), key == "date") << key;
    EXPECT_EQ(read.stringList(key), std::nullopt) << key;
  }
}

TEST_F(SettingsTest, ChangesReachTheDiskTogetherWithinAQuarterSecond) {
  Settings settings(file, clock);
  settings.setInteger("fps", 10);
  EXPECT_THAT(settings.integer("fps"), Optional(10));
  clock.advance(200ms);
  settings.setInteger("fps", 30);
  settings.setInteger("mode", 2);
  EXPECT_FALSE(fs::exists(file));
  EXPECT_EQ(clock.waiting(), 1u);
  clock.advance(50ms);
  const Settings other(file, clock);
  EXPECT_THAT(other.integer("fps"), Optional(30));
  EXPECT_THAT(other.integer("mode"), Optional(2));
}

TEST_F(SettingsTest, WritesNothingForValuesThatAreThereAlready) {
  Settings settings(file, clock);
  settings.setReal("opacity", 0.5);
  settings.setStringList("palette", {"#000000"});
  settings.flush();
  clock.advance(1s);
  fs::remove(file);
  settings.setReal("opacity", 0.5);
  settings.setStringList("palette", {"#000000"});
  settings.remove("missing");
  clock.advance(1s);
  EXPECT_FALSE(fs::exists(file));
  settings.remove("opacity");
  clock.advance(250ms);
  EXPECT_EQ(Settings(file, clock).real("opacity"), std::nullopt);
}

TEST_F(SettingsTest, KeepsWhatANewerVersionWrote) {
  write(R"({"format": "velicor-settings", "later": [1], "values": {"fps": 10, "opacity": 0.25, "shape": {"circle": 3}}})");
  Settings settings(file, clock);
  EXPECT_EQ(settings.value("shape"), std::nullopt);
  EXPECT_THAT(settings.real("opacity"), Optional(0.25));
  settings.setInteger("fps", 30);
  settings.flush();
  EXPECT_THAT(written(), HasSubstr("later"));
  EXPECT_THAT(written(), HasSubstr("circle"));
  EXPECT_THAT(Settings(file, clock).integer("fps"), Optional(30));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SettingsTest, BrokenFilesAreSetAsideAndTheProgramStartsWithDefaults) {
  const std::string contents[] = {"[1, 2]", "{\"values\": {\"fps\": 10}}",
                                  "{\"format\": \"velicor-settings\", \"values\": 3}",
                                  std::string(2 << 20, ' '), std::string("\0\xff\xfe", 3)};
  std::size_t number = 0;
  for (const std::string& content : contents) {
    write(content);
    const Settings settings(file, clock);
    const std::string aside = "settings.json.broken-" + std::to_string(++number);
    EXPECT_EQ(settings.value("fps"), std::nullopt);
    EXPECT_TRUE(fs::exists(file.parent_path() / aside)) << aside;
    EXPECT_FALSE(fs::exists(file)) << aside;
    EXPECT_THAT(log.lines().back(), HasSubstr(aside));
  }
  EXPECT_THAT(log.lines(), SizeIs(number));
  Settings(file, clock).setInteger("fps", 10);
  EXPECT_THAT(Settings(file, clock).integer("fps"), Optional(10));
}

TEST_F(SettingsTest, AFileCutAnywhereIsReadWholeOrSetAsideAsItIs) {
  {
    Settings settings(file, clock);
    settings.setInteger("fps", 30);
    settings.setReal("opacity", 0.5);
    settings.setStringList("palette", {"#FFF200", "ü"});
  }
  const std::string whole = written();
  const fs::path aside = file.parent_path() / "settings.json.broken-1";
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    write(whole.substr(0, length));
    const Settings settings(file, clock);
    if (fs::exists(file)) {
      EXPECT_GE(length, whole.size() - 1) << "all but the last line's end";
      EXPECT_THAT(settings.stringList("palette"), Optional(ElementsAre("#FFF200", "ü")));
    } else {
      EXPECT_FALSE(settings.value("fps") || settings.value("opacity") || settings.value("palette"));
      EXPECT_EQ(fs::file_size(aside), length);
      fs::remove(aside);
    }
  }
}

// The disk is full, and then it is not; the folder can't be written to, and then it can.
TEST_F(SettingsTest, WhatCannotBeWrittenNowIsWrittenLaterAndTheOldFileStaysWhole) {
  Settings settings(file, clock);
  settings.setInteger("fps", 10);
  settings.flush();
  const std::string before = written();
  const auto failsTo = [&](int fps, const std::function<void()>& obstruct, const std::function<void()>& clear) {
    const test::LogRecorder complaints;
    settings.setInteger("fps", fps);
    obstruct();
    clock.advance(250ms);
    settings.flush();
    clear();
    EXPECT_EQ(written(), before);
    EXPECT_THAT(complaints.lines(), ElementsAre(HasSubstr("settings not saved")));
    EXPECT_EQ(std::distance(fs::directory_iterator(file.parent_path()), fs::directory_iterator()), 1);
    settings.setInteger("fps", fps);  // as it is by now: written all the same
    clock.advance(250ms);
    EXPECT_THAT(Settings(file, clock).integer("fps"), Optional(fps));
    settings.setInteger("fps", 10);
    settings.flush();
  };
  rlimit usual{};
  getrlimit(RLIMIT_FSIZE, &usual);
  const auto limitFiles = [&](rlim_t size) {
    const rlimit limit{size, usual.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  };
  std::signal(SIGXFSZ, SIG_IGN);
  failsTo(15, [&] { limitFiles(16); }, [&] { limitFiles(usual.rlim_cur); });
  // The superuser may write everywhere; others see to it by the folder's permissions.
  const fs::path place = file.parent_path();
  failsTo(30, [&] { fs::permissions(place, fs::perms(0555)), setfsuid(65534); },
          [&] { setfsuid(geteuid()), fs::permissions(place, fs::perms(0700)); });
}

TEST_F(SettingsTest, TwoWritersKeepWhatTheOtherHasChanged) {
  Settings first(file, clock);
  first.setInteger("fps", 10);
  first.setInteger("mode", 1);
  first.setString("old", "");
  first.flush();
  Settings second(file, clock);
  second.setInteger("mode", 2);
  second.remove("old");
  second.flush();
  first.setInteger("mode", 1);
  first.setInteger("fps", 30);
  first.flush();
  {
    const Settings read(file, clock);
    EXPECT_THAT(read.integer("fps"), Optional(30));
    EXPECT_THAT(read.integer("mode"), Optional(2));
    EXPECT_EQ(read.value("old"), std::nullopt);
  }
  write("half a fi");
  first.setInteger("fps", 15);
  first.flush();
  EXPECT_TRUE(fs::exists(file.string() + ".broken-1"));
  const Settings read(file, clock);
  EXPECT_THAT(read.integer("fps"), Optional(15));
  EXPECT_THAT(read.integer("mode"), Optional(1)) << "what is left to know";
}

TEST_F(SettingsTest, SomethingElseInTheFilesPlaceIsSetAsideToo) {
  fs::create_directories(file);
  Settings settings(file, clock);
  settings.setInteger("fps", 10);
  settings.flush();
  EXPECT_THAT(Settings(file, clock).integer("fps"), Optional(10));
}

TEST_F(SettingsTest, AScheduledWriteForgetsSettingsThatAreGone) {
  { Settings(file, clock).setInteger("fps", 10); }
  EXPECT_TRUE(fs::exists(file));
  fs::remove(file);
  clock.advance(1s);
  EXPECT_FALSE(fs::exists(file));
}

TEST(SettingsFileTest, LiesInTheUsersConfigurationFolder) {
  qputenv("XDG_CONFIG_HOME", "/some/where");
  EXPECT_EQ(userFile(), "/some/where/velicor/settings.json");
  qputenv("XDG_CONFIG_HOME", "");
  qputenv("HOME", "/home/somebody");
  EXPECT_EQ(userFile(), "/home/somebody/.config/velicor/settings.json");
}

}  // namespace
}  // namespace velicor::settings
