#include "app/panel_dump.h"

#include <array>
#include <chrono>
#include <string_view>

#include "app/app_state.h"
#include "diagnostics/debug_dump.h"
#include "platform/dispatch/clock.h"
#include "scopes/scopes_panel_controller.h"

namespace velicor {

namespace {

using namespace std::chrono_literals;

struct Step {
  std::chrono::milliseconds time;
  MetalProcessor::Mode mode;
  std::string_view name;
};

constexpr std::array steps{Step{2s, MetalProcessor::Mode::skin, "panel-skin"},
                           Step{3s, MetalProcessor::Mode::exposure, "panel-exposure"},
                           Step{4s, MetalProcessor::Mode::original, "panel-original"}};
constexpr auto settlingTime = 400ms;

}  // namespace

// The panel has one size only, which is its smallest.
void startPanelDumps(AppState& state, ScopesPanelController& scopes, dispatch::Clock& clock) {
  for (const Step& step : steps) {
    clock.callAfter(step.time, [&state, &scopes, &clock, step] {
      state.setMode(step.mode);
      clock.callAfter(settlingTime, [&scopes, step] { DebugDump::writeView(scopes.panel().window(), step.name); });
    });
  }
}

}  // namespace velicor
