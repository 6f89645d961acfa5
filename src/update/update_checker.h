#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <QCoroTask>

#include "platform/dispatch/clock.h"
#include "platform/log/log.h"
#include "platform/notifications/published.h"
#include "platform/notifications/signal.h"
#include "platform/settings/settings.h"
#include "update/release.h"
#include "update/web_session.h"

class QNetworkAccessManager;

namespace velicor {

namespace desktop {
class Opener;
class ScreenList;
}  // namespace desktop

// Runs the update cycle: looks for a newer build once a day or when asked to, offers it, downloads it and
// opens it. Nothing is installed. Publishes how far it is; UpdateWindow shows that. Main thread.
class UpdateChecker {
 public:
  // What the checker stands on. The references outlive the checker.
  struct Environment {
    settings::Settings& settings;
    dispatch::Clock& clock;                       // of the time-outs
    std::function<settings::Date()> currentTime;  // of the intervals between checks
    QNetworkAccessManager& network;
    desktop::Opener& opener;
    const desktop::ScreenList& screens;
    std::filesystem::path caches;  // the user's caches folder
  };

  // Makes `shared` available while it lives, and destroys the shared checker and its window with itself: kept
  // by main().
  class Installation {
   public:
    explicit Installation(Environment environment);
    ~Installation();
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;
  };

  // The program's one checker, made at the first call. Without an installation the process ends with a log
  // line.
  static UpdateChecker& shared();

  // Where the cycle stands.
  struct Phase {
    enum Case {
      checking,     // a manual check is running; also before the first
      offer,        // `release` is newer and may be downloaded
      downloading,  // the disk image of `release`
      mounted,      // the disk image was opened
      upToDate,     // a manual check found nothing newer
      failed,       // a manual check or a download; `message` says it to the user
    };

    Phase(Case phase, std::string text = {}) : which(phase), message(std::move(text)) {}
    friend bool operator==(const Phase&, const Phase&) = default;

    Case which;
    std::string message;
  };

  explicit UpdateChecker(Environment environment);
  ~UpdateChecker();
  UpdateChecker(const UpdateChecker&) = delete;
  UpdateChecker& operator=(const UpdateChecker&) = delete;

  // Called before one of the next two changes, or is set to what it was.
  Signal<> willChange;
  const Phase& phase() const { return *phase_; }
  const std::optional<Release>& release() const { return *release_; }

  // The running build; 0 and "1.0" where the product doesn't say.
  static std::string currentVersion();
  static std::int64_t currentBuild();

  // Checks in silence, unless the last check was within a day or the user wanted none of it for now. A newer
  // build opens the window; a failure is logged only.
  void checkAtLaunch();

  // Checks in any case, with the window open from the start.
  void checkNow();

  // Downloads what is offered into the folder "Updates" of the user's caches, and opens it. Does nothing
  // without a trusted release.
  void download();

  // No automatic check for a day; closes the window.
  void snooze();

  // Shows the user's browser where to get the release, or the product's page; closes the window.
  void openInBrowser();

  const desktop::ScreenList& screens() const { return environment_.screens; }

 private:
  // Gone when the checker is.
  using Life = std::weak_ptr<const bool>;

  QCoro::Task<> checkInSilence(Life life);
  QCoro::Task<> check(Life life);
  QCoro::Task<> downloadAndOpen(Life life, Release release);
  QCoro::Task<Result<Release>> fetch();
  static QCoro::Task<Result<std::filesystem::path>> downloadDMG(WebSession& session, Release release,
                                                                std::filesystem::path caches);

  bool isUpgrade(const Release& release) const;
  void noteCheck();
  void fail(std::string message);

  Environment environment_;
  WebSession session_;
  const log::Logger log_{"update"};
  Published<Phase> phase_{willChange, Phase(Phase::checking)};
  Published<std::optional<Release>> release_{willChange, std::nullopt};
  std::shared_ptr<const bool> life_ = std::make_shared<const bool>();
};

}  // namespace velicor
