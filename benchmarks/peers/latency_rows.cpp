#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <memory>
#include <random>
#include <stdexcept>

#include <poll.h>
#include <xcb/damage.h>

#include "peers/loupe_stage.h"
#include "peers/rows.h"
#include "support/brief.h"

namespace velicor::benchmarks {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

const int flips = unlessBrief(100, 4);
constexpr double frameInterval = 1000.0 / 30;  // milliseconds

// Looks at the loupe's middle whenever something is drawn into the loupe.
class Watch {
 public:
  Watch(const std::string& display, xcb_window_t loupe) : client_(display) {
    std::free(xcb_damage_query_version_reply(client_.raw(), xcb_damage_query_version(client_.raw(), 1, 1),
                                             nullptr));
    xcb_damage_create(client_.raw(), xcb_generate_id(client_.raw()), loupe,
                      XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    client_.sync();
  }

  std::uint32_t pixel() const { return client_.screenImage({regionCentre.x, regionCentre.y, 1, 1}).at(0); }

  // Waits until the pixel has another colour than this one; throws after a second.
  Clock::time_point waitForOther(std::uint32_t colour) {
    const auto end = Clock::now() + 1s;
    while (pixel() == colour) {
      if (Clock::now() > end)
        throw std::runtime_error("the loupe did not follow a change of the screen within a second");
      waitForDrawing();
    }
    return Clock::now();
  }

 private:
  void waitForDrawing() {
    pollfd readable{xcb_get_file_descriptor(client_.raw()), POLLIN, 0};
    if (xcb_generic_event_t* queued = xcb_poll_for_event(client_.raw())) return std::free(queued);
    poll(&readable, 1, 100);
    while (xcb_generic_event_t* event = xcb_poll_for_event(client_.raw()))
      std::free(event);
  }

  test::XClient client_;
};

// A small window under the loupe's middle changes its colour at moments that have nothing to do with frames,
// over what is there otherwise. Milliseconds.
std::vector<double> delays(const std::function<std::shared_ptr<void>(LoupeStage&)>& show) {
  LoupeStage stage;
  constexpr std::uint32_t dark = 0x600000, bright = 0x20d0f0;  // no skin: the loupe shows them in grey
  const xcb_window_t window =
      stage.client().showColour({regionCentre.x - 20, regionCentre.y - 20, 40, 40}, dark);
  stage.client().lower(window);
  const std::shared_ptr<void> shown = show(stage);
  const LoupeOnStage velicor(stage);
  Watch watch(stage.display(), velicor.loupe());
  std::this_thread::sleep_for(2s);
  std::mt19937 random(1);
  std::uniform_int_distribution<int> pause(150'000, 250'000);
  std::vector<double> result;
  for (int i = 0; i < flips; ++i) {
    std::this_thread::sleep_for(std::chrono::microseconds(pause(random)));
    const std::uint32_t before = watch.pixel();
    const auto start = Clock::now();
    stage.client().fill(window, {0, 0, 40, 40}, i % 2 == 0 ? bright : dark);
    result.push_back(std::chrono::duration<double, std::milli>(watch.waitForOther(before) - start).count());
  }
  return result;
}

std::string summary(std::vector<double> times) {
  std::sort(times.begin(), times.end());
  return "median " + rounded(median(times), 1) + " ms (least " + rounded(times.front(), 1) +
         ", 95 of 100 under " + rounded(times.at(times.size() * 95 / 100), 1) + ", most " +
         rounded(times.back(), 1) + ")";
}

void addRow(Table& table, const std::string& otherwise, const std::vector<double>& times) {
  table.atMost("screen change to changed loupe pixel at 30 frames a second, " + otherwise,
               std::round(10 * (frameInterval / 2 + 5)) / 10, " ms (half an interval + 5 ms)", median(times),
               summary(times));
}

}  // namespace

void addLatencyRows(Table& table) {
  const auto moving = [](LoupeStage& stage) { return std::make_shared<MovingPicture>(stage.display()); };
  const auto still = [](LoupeStage& stage) {
    stage.showStillGround();
    return nullptr;
  };
  addRow(table, "the rest of the region changing with every frame", delays(moving));
  addRow(table, "the rest still", delays(still));
}

}  // namespace velicor::benchmarks
