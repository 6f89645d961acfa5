// The program's one state: made on first use from what main() has installed.
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

#include "app/app_state.h"
#include "platform/log/log.h"

namespace velicor {

namespace {

// Both are emptied by Installation and never by the end of the process, which may come from inside a call.
std::optional<AppState::Environment>& environmentInUse() {
  static auto* const environment = new std::optional<AppState::Environment>;
  return *environment;
}

std::unique_ptr<AppState>& instance() {
  static auto* const state = new std::unique_ptr<AppState>;
  return *state;
}

[[noreturn]] void misuse(const char* what) {
  log::general(what);
  std::abort();
}

}  // namespace

AppState::Installation::Installation(Environment environment) {
  if (environmentInUse()) misuse("AppState: a second environment was installed");
  environmentInUse().emplace(std::move(environment));
}

AppState::Installation::~Installation() {
  instance().reset();
  environmentInUse().reset();
}

AppState& AppState::shared() {
  if (!environmentInUse()) misuse("AppState: the shared state was asked for before its environment was installed");
  if (!instance()) instance() = std::make_unique<AppState>(*environmentInUse());
  return *instance();
}

}  // namespace velicor
