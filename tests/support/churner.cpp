#include <chrono>
#include <cstdlib>
#include <random>
#include <string_view>
#include <thread>
#include <vector>

#include <xcb/shape.h>

#include "support/x_client.h"

// A program whose windows never come to rest: seed, "managed" or "unmanaged". Runs until it is ended.
namespace {

using velicor::DeviceRect;
using velicor::test::XClient;

constexpr std::size_t mostWindows = 14;
constexpr auto pace = std::chrono::milliseconds(5);

class Churn {
 public:
  Churn(unsigned seed, bool managed) : client_(std::getenv("DISPLAY")), random_(seed), managed_(managed) {
    client_.setNumber(client_.root(), "VELICOR_CHURNER", 1);
  }

  void step() {
    if (windows_.empty() || (windows_.size() < mostWindows && pick(6) == 0)) return create();
    const auto place = static_cast<std::size_t>(pick(static_cast<int>(windows_.size())));
    const xcb_window_t window = windows_[place];
    switch (pick(12)) {
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
        return client_.resize(window, 20 + pick(250), 20 + pick(200));
      case 8:
        return reshape(window);
      case 9:
        return client_.setNumber(window, "_NET_WM_WINDOW_OPACITY", pick(2) ? 0xffffffff : 0x40000000);
      default:
        return client_.map(window);
    }
  }

 private:
  void create() {
    const bool alpha = pick(4) == 0;
    const DeviceRect place{pick(500), pick(300), 20 + pick(250), 20 + pick(200)};
    const xcb_window_t window = client_.makeWindow(place, {.managed = managed_ && pick(2) == 0,
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

  void reshape(xcb_window_t window) {
    if (pick(2) == 0) return client_.shape(window, {pick(40), pick(40), 10 + pick(150), 10 + pick(150)});
    xcb_shape_mask(client_.raw(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, window, 0, 0, XCB_NONE);
    client_.sync();
  }

  int pick(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }

  XClient client_;
  std::mt19937 random_;
  bool managed_;
  std::vector<xcb_window_t> windows_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return EXIT_FAILURE;
  Churn churn(static_cast<unsigned>(std::atoi(argv[1])), std::string_view(argv[2]) == "managed");
  for (auto next = std::chrono::steady_clock::now();;
       next = std::max(next + pace, std::chrono::steady_clock::now())) {
    std::this_thread::sleep_until(next);
    churn.step();
  }
}
