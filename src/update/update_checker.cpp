#include "update/update_checker.h"

#include <utility>

#include "platform/base/product.h"
#include "platform/desktop/opener.h"
#include "update/log_text.h"
#include "update/update_config.h"
#include "update/update_window.h"

namespace velicor {

namespace {

constexpr const char* lastCheckKey = "update.lastCheck";
constexpr const char* snoozeUntilKey = "update.snoozeUntil";
constexpr std::chrono::seconds day{86400};

constexpr int fileNotFound = 1;

// Between two stored or current times, however far apart.
std::chrono::duration<double> between(settings::Date from, settings::Date to) {
  using Seconds = std::chrono::duration<double>;
  return Seconds(to.time_since_epoch()) - Seconds(from.time_since_epoch());
}

std::string unreachableText() {
  return "Couldn't reach " + std::string(product::siteHost) +
         ". Check your internet connection and try again.";
}

std::string unfinishedText() {
  return "The download didn't finish. You can get it from " + std::string(product::siteHost) + " instead.";
}

}  // namespace

UpdateChecker::UpdateChecker(Environment environment)
    : environment_(std::move(environment)), session_(environment_.network, environment_.clock) {}

UpdateChecker::~UpdateChecker() = default;

std::string UpdateChecker::currentVersion() {
  return product::version().empty() ? "1.0" : std::string(product::version());
}

std::int64_t UpdateChecker::currentBuild() { return wholeNumber(product::build()).value_or(0); }

void UpdateChecker::checkAtLaunch() {
  const settings::Date now = environment_.currentTime();
  const auto snoozed = environment_.settings.date(snoozeUntilKey);
  if (snoozed && now < *snoozed) return;
  const auto last = environment_.settings.date(lastCheckKey);
  if (last && between(*last, now) < day) return;
  checkInSilence(life_);
}

QCoro::Task<> UpdateChecker::checkInSilence(Life life) {
  noteCheck();
  Result<Release> found = co_await fetch();
  if (life.expired()) co_return;
  if (!found) {
    log_.info("update check failed: " + logText(found.error().description));
    co_return;
  }
  if (!isUpgrade(*found)) co_return;
  log_.info("offering " + logText(found->version) + " (build " + std::to_string(found->build) + ")");
  release_ = std::move(*found);
  phase_ = Phase::offer;
  UpdateWindow::show();
}

void UpdateChecker::checkNow() {
  release_ = std::nullopt;
  phase_ = Phase::checking;
  UpdateWindow::show();
  check(life_);
}

QCoro::Task<> UpdateChecker::check(Life life) {
  noteCheck();
  Result<Release> found = co_await fetch();
  if (life.expired()) co_return;
  if (!found) {
    fail(unreachableText());
  } else if (isUpgrade(*found)) {
    release_ = std::move(*found);
    phase_ = Phase::offer;
  } else {
    phase_ = Phase::upToDate;
  }
}

void UpdateChecker::download() {
  if (!release() || !release()->isTrusted()) return;
  phase_ = Phase::downloading;
  downloadAndOpen(life_, *release());
}

QCoro::Task<> UpdateChecker::downloadAndOpen(Life life, Release release) {
  Result<std::filesystem::path> file =
      co_await downloadDMG(session_, std::move(release), environment_.caches);
  if (life.expired()) co_return;
  if (file) {
    const Status opened = environment_.opener.openFile(*file);
    if (!opened) {
      file = failure("velicor.update", fileNotFound, "file not found: " + opened.error().description);
    }
  }
  if (file) {
    phase_ = Phase::mounted;
  } else {
    log_.error("download failed: " + logText(file.error().description));
    fail(unfinishedText());
  }
}

void UpdateChecker::snooze() {
  environment_.settings.setDate(snoozeUntilKey, environment_.currentTime() + day);
  UpdateWindow::close();
}

void UpdateChecker::openInBrowser() {
  const bool toRelease = release() && release()->isTrusted();
  const std::string target =
      toRelease ? release()->url.absoluteString() : UpdateConfig::page().toEncoded().toStdString();
  if (const Status opened = environment_.opener.openUrl(target); !opened) {
    log_.error("can't open " + logText(target) + ": " + logText(opened.error().description));
  }
  UpdateWindow::close();
}

bool UpdateChecker::isUpgrade(const Release& release) const {
  if (currentBuild() >= release.build) return false;
  if (!release.isTrusted()) {
    log_.error("ignoring update: " + logText(release.url.absoluteString()) + " is not on our site");
    return false;
  }
  return release.runsHere();
}

void UpdateChecker::noteCheck() { environment_.settings.setDate(lastCheckKey, environment_.currentTime()); }

void UpdateChecker::fail(std::string message) { phase_ = Phase(Phase::failed, std::move(message)); }

}  // namespace velicor
