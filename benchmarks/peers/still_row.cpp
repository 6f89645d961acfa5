#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include <xcb/damage.h>

#include "peers/loupe_stage.h"
#include "peers/process_usage.h"
#include "peers/rows.h"
#include "support/brief.h"

namespace velicor::benchmarks {

namespace {

using namespace std::chrono_literals;

const auto settling = unlessBrief(5s, 1s);
const auto period = unlessBrief(60s, 1s);

// Counts what anybody draws into some windows.
class Drawings {
 public:
  Drawings(test::XClient& client, const std::vector<xcb_window_t>& windows) : connection_(client.raw()) {
    const xcb_query_extension_reply_t* damage = xcb_get_extension_data(connection_, &xcb_damage_id);
    if (!damage || !damage->present) throw std::runtime_error("the server reports no drawing");
    event_ = damage->first_event + XCB_DAMAGE_NOTIFY;
    std::free(
        xcb_damage_query_version_reply(connection_, xcb_damage_query_version(connection_, 1, 1), nullptr));
    for (const xcb_window_t window : windows) {
      xcb_damage_create(connection_, xcb_generate_id(connection_), window,
                        XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    }
    client.sync();
    take();
  }

  // Since the last call.
  int take() {
    int count = 0;
    while (xcb_generic_event_t* event = xcb_poll_for_event(connection_)) {
      if ((event->response_type & 0x7f) == event_) ++count;
      std::free(event);
    }
    return count;
  }

 private:
  xcb_connection_t* connection_;
  int event_ = 0;
};

}  // namespace

void addStillRow(Table& table) {
  LoupeStage stage;
  stage.showStillGround();
  const LoupeOnStage velicor(stage);
  std::this_thread::sleep_for(settling);
  Drawings drawings(stage.client(), stage.windowsOfSameClient(velicor.loupe()));
  const double before = cpuSeconds(velicor.processID()), serverBefore = cpuSeconds(stage.serverProcess());
  const ThreadSwitches switchesBefore = contextSwitches(velicor.processID());
  std::this_thread::sleep_for(period);
  const double seconds = std::chrono::duration<double>(period).count();
  const double load = (cpuSeconds(velicor.processID()) - before) / seconds * 100;
  const double server = (cpuSeconds(stage.serverProcess()) - serverBefore) / seconds * 100;
  const long long switches = switchesBetween(switchesBefore, contextSwitches(velicor.processID()));
  stage.client().sync();
  const int drawn = drawings.take();
  const std::string what = "still screen, both panels shown, pointer still, over 60 s";
  table.atMost(what + ": drawings in our windows", 0, "", drawn, std::to_string(drawn));
  table.atMost(what + ": processor time", 0.1, " % of one core", load,
               rounded(load, 4) + " % (" + std::to_string(switches) + " context switches; X server " +
                   rounded(server, 4) + " %)");
}

}  // namespace velicor::benchmarks
