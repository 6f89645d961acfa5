#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

#include <unistd.h>
#include <xcb/shm.h>
#include <QCoreApplication>
#include <QCoroTask>

#include "platform/dispatch/main_queue.h"
#include "platform/screencapture/x11/server_memory.h"
#include "platform/screencapture/x11/service.h"
#include "support/x_client.h"
#include "support/x_server.h"

// What a captured frame of 640 × 400 costs, in processor time of this process's capture thread and of the X
// server, beside a plain copy of the root window at the same rate. A window under ours changes 30 times a
// second throughout; what the server spends on that alone is subtracted.
namespace {

using namespace velicor;
using namespace velicor::screencapture;

constexpr DeviceRect region{100, 100, 640, 400};
constexpr int rate = 30;
constexpr int seconds = 5;

double threadSeconds(const std::string& name) {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
    std::string own;
    std::ifstream(entry.path() / "comm") >> own;
    double nanoseconds = 0;
    if (own == name) std::ifstream(entry.path() / "schedstat") >> nanoseconds;
    if (own == name) return nanoseconds * 1e-9;
  }
  return 0;
}

double thisThreadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

class Counter : public StreamOutput {
 public:
  void didOutputSampleBuffer(Stream&, const SampleBuffer& sample, OutputType) override {
    if (sample.imageBuffer) ++frames;
  }
  std::atomic<int> frames{0};
};

// Changes the window at the given rate; between the changes `each` runs.
void animate(test::XClient& client, xcb_window_t window, const std::function<void()>& each) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < seconds * rate; ++i) {
    std::this_thread::sleep_until(start + std::chrono::microseconds(1000000 / rate) * i);
    client.fill(window, {20, 20, 40, 40}, static_cast<std::uint32_t>(i));
    each();
  }
}

struct Cost {
  double client = 0;
  double server = 0;
  int frames = 0;
};

class Bench {
 public:
  explicit Bench(int windows)
      : service_(std::move(*makeX11Service(server_.name(), own_))),
        other_(server_.name()),
        ours_(server_.name()) {
    ours_.joinOwn(own_);
    for (int i = 0; i < windows - 1; ++i)
      other_.showPattern({120 + 150 * i, 150, 100, 300}, {i});
    window_ = windows == 1 ? other_.showPattern({50, 50, 900, 600}, {7})
                           : other_.showPattern({50, 50, 500, 350}, {7});
    cover_ = ours_.showColour({80, 80, 700, 500}, test::magenta);
  }

  double baseline() {
    const double before = server_.program().cpuSeconds();
    animate(other_, window_, [] {});
    return server_.program().cpuSeconds() - before;
  }

  Cost stream(double baseline) {
    const auto content = QCoro::waitFor(service_->shareableContent({}));
    StreamConfiguration configuration;
    configuration.sourceRect = {region.x, region.y, region.width, region.height};
    configuration.width = region.width;
    configuration.height = region.height;
    configuration.minimumFrameInterval = {1, rate};
    dispatch::SerialQueue queue("velicor.capture");
    const auto counter = std::make_shared<Counter>();
    const auto stream = service_->makeStream({content->displays.at(0), {{getpid(), ""}}}, configuration, {});
    if (!stream->addStreamOutput(counter, OutputType::screen, queue)) return {};
    if (!QCoro::waitFor(stream->startCapture())) return {};
    const double server = server_.program().cpuSeconds();
    const double client = threadSeconds("velicor.x11cap");
    animate(other_, window_, [] {});
    const Cost cost{threadSeconds("velicor.x11cap") - client,
                    server_.program().cpuSeconds() - server - baseline, counter->frames};
    measureStill();
    return cost;
  }

  Cost rootCopy(double baseline) {
    auto connection = std::move(*x11::Connection::open(server_.name(), own_));
    ServerMemory memory(*connection);
    const auto segment = memory.make(region.width * region.height * 4);
    const double server = server_.program().cpuSeconds();
    double client = 0;
    Cost cost;
    animate(other_, window_, [&] {
      const double before = thisThreadSeconds();
      const auto cookie =
          xcb_shm_get_image(connection->raw(), connection->root(), region.x, region.y, region.width,
                            region.height, ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP, segment->serverId(), 0);
      if (connection->reply(xcb_shm_get_image_reply, cookie)) ++cost.frames;
      client += thisThreadSeconds() - before;
    });
    cost.client = client;
    cost.server = server_.program().cpuSeconds() - server - baseline;
    return cost;
  }

 private:
  // Nothing changes, then only our own window does, 60 times a second.
  void measureStill() {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const double before = threadSeconds("velicor.x11cap");
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    const double still = threadSeconds("velicor.x11cap");
    for (int i = 0; i < seconds * 60; ++i) {
      ours_.fill(cover_, {0, 0, 700, 500}, static_cast<std::uint32_t>(i));
      std::this_thread::sleep_for(std::chrono::microseconds(1000000 / 60));
    }
    const double own = threadSeconds("velicor.x11cap");
    std::printf("  still screen: client %.3f ms/s; only our own window draws: %.3f ms/s\n",
                (still - before) * 1e3 / seconds, (own - still) * 1e3 / seconds);
  }

  test::XServer server_;
  x11::OwnClients own_;
  std::unique_ptr<Service> service_;
  test::XClient other_;
  test::XClient ours_;
  xcb_window_t window_ = 0;
  xcb_window_t cover_ = 0;
};

void print(const char* name, const Cost& cost) {
  const double frames = cost.frames > 0 ? cost.frames : 1;
  std::printf("%-28s %4d frames  client %6.1f us  server %6.1f us\n", name, cost.frames,
              cost.client / frames * 1e6, cost.server / frames * 1e6);
}

}  // namespace

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  dispatch::MainQueue::shared().attach();
  {
    Bench one(1);
    const double baseline = one.baseline();
    print("root copy", one.rootCopy(baseline));
    print("stream, one window", one.stream(baseline));
  }
  {
    Bench four(4);
    print("stream, four windows", four.stream(four.baseline()));
  }
  dispatch::MainQueue::shared().detach();
}
