#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>

#include "platform/base/product.h"
#include "platform/desktop/opener.h"
#include "platform/desktop/screen.h"
#include "platform/settings/settings.h"
#include "support/log_recorder.h"
#include "support/manual_clock.h"
#include "update/update_checker.h"
#include "update/update_window.h"
#include "update/web_site.h"

namespace velicor::test {

// The version that runs, and what the window says of it.
inline const std::string running(product::version());
inline const std::string youHave = "You have " + running + ".";

struct FakeOpener : desktop::Opener {
  Status openUrl(const std::string& url) override { return open(url); }
  Status openFile(const std::filesystem::path& file) override { return open(file.string()); }
  Status open(const std::string& what) {
    opened.push_back(what);
    return works ? Status() : failure("test", 1, "no program for it");
  }

  std::vector<std::string> opened;
  bool works = true;
};

struct NoScreens : desktop::ScreenList {
  std::vector<desktop::Screen> screens() const override { return {}; }
  std::optional<desktop::Screen> mainScreen() const override { return std::nullopt; }
};

// The shared checker on the real network code, a web site of its own, and clocks that stand still.
class UpdateFixture : public testing::Test {
 protected:
  using Phase = UpdateChecker::Phase;

  ~UpdateFixture() override;

  // The feed of an upgrade, with these members instead of or beside the usual ones.
  static QByteArray feed(const QJsonObject& changes = {});
  void serveFeed(const QByteArray& answer) { site.serve("velicor.example/appcast.json", answer); }

  bool reaches(Phase::Case phase);
  void offer(const QJsonObject& changes = {});

  // What can be read in the window, from top to bottom; buttons in brackets, the default with a star.
  static std::string shown();
  static void click(const std::string& title);
  std::vector<std::string> updatesFolder() const;

  const settings::Date start{std::chrono::days(20'000)};
  settings::Date now = start;
  ManualClock clock;
  LogRecorder log;
  WebSite site;
  FakeOpener opener;
  NoScreens screens;
  QTemporaryDir folder;
  const std::filesystem::path caches = folder.filePath("caches").toStdString();
  settings::Settings settings{folder.filePath("settings.json").toStdString(), clock};
  UpdateChecker::Installation installation{
      {settings, clock, [this] { return now; }, site.network(), opener, screens, caches}};
  UpdateChecker& checker = UpdateChecker::shared();
};

}  // namespace velicor::test
