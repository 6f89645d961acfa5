#include <chrono>
#include <cstdlib>
#include <memory>
#include <random>
#include <string_view>
#include <thread>
#include <vector>

#include <xcb/shape.h>

#include "support/x_client.h"

// Programs whose windows never come to rest: seed, "managed" or "unmanaged", how many programs, how many
// windows each, changes a second. Where there are several, they end each other's connections now and then,
// and new ones come. Runs until it is ended.
namespace {

using velicor::DeviceRect;
using velicor::test::XClient;

int pick(std::mt19937& random, int count) {
  return static_cast<int>(random() % static_cast<unsigned>(count));
}

class Churn {
 public:
  Churn(std::mt19937& random, bool managed, std::size_t most)
      : client_(std::getenv("DISPLAY")), random_(random), managed_(managed), most_(most) {
    client_.setNumber(client_.root(), "VELICOR_CHURNER", 1);
  }

  void step() {
    if (windows_.empty() || (windows_.size() < most_ && pick(6) == 0)) return create();
    const auto place = static_cast<std::size_t>(pick(static_cast<int>(windows_.size())));
    const xcb_window_t window = windows_[place];
    switch (pick(16)) {
      case 0:
        windows_.erase(windows_.begin() + static_cast<std::ptrdiff_t>(place));
        return client_.destroy(window);
      case 1:
        return client_.unmap(window);
      case 2:
        return client_.raise(window);
      case 3:
        return client_.lower(window);
      case 4:
      case 5:
        return client_.move(window, pick(600) - 50, pick(400) - 50);
      case 6:
      case 7:
        return resize(window);
      case 8:
        return reshape(window);
      case 9:
        return client_.setNumber(window, "_NET_WM_WINDOW_OPACITY", pick(2) ? 0xffffffff : 0x40000000);
      case 10:
        return configure(window, {XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE, any(),
                                  pick(2) ? XCB_STACK_MODE_ABOVE : XCB_STACK_MODE_BELOW});
      case 11:
        return configure(window, {XCB_CONFIG_WINDOW_BORDER_WIDTH, static_cast<std::uint32_t>(pick(6)), 0});
      case 12:
        return managed_ ? client_.map(window) : reparent(window);
      default:
        return client_.map(window);
    }
  }

  // Of those that it has now.
  xcb_window_t any() {
    return windows_.empty() ? xcb_window_t{XCB_NONE}
                            : windows_[static_cast<std::size_t>(pick(static_cast<int>(windows_.size())))];
  }

  // Ends the connection that made the window.
  void kill(xcb_window_t window) {
    xcb_kill_client(client_.raw(), window);
    client_.sync();
  }

 private:
  struct Configuration {
    int mask;
    std::uint32_t first;
    std::uint32_t second;
  };

  int pick(int count) { return ::pick(random_, count); }

  // Most are like windows that people have, some tiny, some huge, in one direction or in both.
  DeviceRect somewhere() {
    DeviceRect place{pick(500), pick(300), 20 + pick(250), 20 + pick(200)};
    if (pick(15) == 0) place.width = 1 + pick(3);
    if (pick(15) == 0) place.height = 1 + pick(3);
    if (pick(60) == 0) place = {pick(200) - 300, pick(200) - 300, 1000 + pick(2000), 800 + pick(1000)};
    if (pick(60) == 0) place = {pick(200) - 9000, pick(400), 9000 + pick(9000), 1 + pick(9)};
    return place;
  }

  void create() {
    const bool alpha = pick(4) == 0;
    const xcb_window_t window = client_.makeWindow(somewhere(), {.managed = managed_ && pick(2) == 0,
                                                                 .border = pick(3) == 0 ? 4 : 0,
                                                                 .borderColour = 0x00ff00,
                                                                 .alpha = alpha});
    if (alpha) {
      client_.setColour(window, 0x80402010);
    } else {
      client_.setPattern(window, {pick(100)});
    }
    client_.map(window);
    windows_.push_back(window);
  }

  void resize(xcb_window_t window) {
    const DeviceRect place = somewhere();
    client_.resize(window, place.width, place.height);
  }

  void reshape(xcb_window_t window) {
    if (pick(8) == 0) return client_.shape(window, {});
    if (pick(2) == 0) return client_.shape(window, {pick(40), pick(40), 10 + pick(150), 10 + pick(150)});
    xcb_shape_mask(client_.raw(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, window, 0, 0, XCB_NONE);
    client_.sync();
  }

  // Into another window, which may be in this one and refuse, or out of it again.
  void reparent(xcb_window_t window) {
    xcb_reparent_window(client_.raw(), window, pick(3) == 0 ? any() : client_.root(),
                        static_cast<std::int16_t>(pick(300)), static_cast<std::int16_t>(pick(200)));
    client_.sync();
  }

  void configure(xcb_window_t window, const Configuration& wanted) {
    const std::uint32_t values[] = {wanted.first, wanted.second};
    xcb_configure_window(client_.raw(), window, static_cast<std::uint16_t>(wanted.mask), values);
    client_.sync();
  }

  XClient client_;
  std::mt19937& random_;
  bool managed_;
  std::size_t most_;
  std::vector<xcb_window_t> windows_;
};

struct Programs {
  explicit Programs(char** arguments)
      : random(static_cast<unsigned>(std::atoi(arguments[0]))),
        managed(std::string_view(arguments[1]) == "managed"),
        most(static_cast<std::size_t>(std::atoi(arguments[3]))) {
    for (int i = std::atoi(arguments[2]); i > 0; --i)
      all.push_back(std::make_unique<Churn>(random, managed, most));
  }

  void step() {
    const auto count = static_cast<int>(all.size());
    const auto one = static_cast<std::size_t>(pick(random, count));
    const auto other = static_cast<std::size_t>(pick(random, count));
    if (one == other || pick(random, 200) != 0) return all[one]->step();
    const xcb_window_t window = all[other]->any();
    if (window == XCB_NONE) return;
    all[one]->kill(window);
    all[other] = std::make_unique<Churn>(random, managed, most);
  }

  std::mt19937 random;
  bool managed;
  std::size_t most;
  std::vector<std::unique_ptr<Churn>> all;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) return EXIT_FAILURE;
  Programs programs(argv + 1);
  const auto pace = std::chrono::microseconds(1'000'000 / std::atoi(argv[5]));
  for (auto next = std::chrono::steady_clock::now();;
       next = std::max(next + pace, std::chrono::steady_clock::now())) {
    std::this_thread::sleep_until(next);
    programs.step();
  }
}
