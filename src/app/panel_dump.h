#pragma once

namespace velicor {

class AppState;
class ScopesPanelController;

namespace dispatch {
class Clock;
}

// For developers: shows each mode in turn for a second, from two seconds from now on, and dumps the scopes panel as
// it is 0.4 seconds after the mode was set. Ends with the mode `original`. All three outlive the sequence. Main
// thread.
void startPanelDumps(AppState& state, ScopesPanelController& scopes, dispatch::Clock& clock);

}  // namespace velicor
