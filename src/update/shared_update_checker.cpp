// The program's one checker: made on first use from what main() has installed.
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

#include "platform/log/log.h"
#include "update/update_checker.h"
#include "update/update_window.h"

namespace velicor {

namespace {

// Both are emptied by Installation and never by the end of the process, which may come from inside a call.
std::optional<UpdateChecker::Environment>& installed() {
  static auto* const environment = new std::optional<UpdateChecker::Environment>;
  return *environment;
}

std::unique_ptr<UpdateChecker>& instance() {
  static auto* const checker = new std::unique_ptr<UpdateChecker>;
  return *checker;
}

[[noreturn]] void misuse(const char* what) {
  log::general(what);
  std::abort();
}

}  // namespace

UpdateChecker::Installation::Installation(Environment environment) {
  if (installed()) misuse("UpdateChecker: a second environment was installed");
  installed().emplace(std::move(environment));
}

UpdateChecker::Installation::~Installation() {
  UpdateWindow::discard();
  instance().reset();
  installed().reset();
}

UpdateChecker& UpdateChecker::shared() {
  if (!installed())
    misuse("UpdateChecker: the shared checker was asked for before its environment was installed");
  if (!instance()) instance() = std::make_unique<UpdateChecker>(*installed());
  return *instance();
}

}  // namespace velicor
