#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <unistd.h>
#include <xcb/shm.h>
#include <QCoreApplication>
#include <QCoroTask>

#include "platform/dispatch/main_queue.h"
#include "platform/screencapture/x11/server_memory.h"
#include "platform/screencapture/x11/service.h"
#include "support/brief.h"
#include "support/x_client.h"
#include "support/x_server.h"

// What a captured frame costs, in processor time of this process's capture thread and of the X server, beside
// a plain copy of the same rectangle of the root window at the same rate; for several scenes and sizes. A
// window under ours changes 30 times a second throughout, once in a spot and once all over; what the server
// spends on that alone is subtracted. Prints the medians of several rounds as a table. A width as argument
// measures that size only, a scene's number after it that scene.
namespace {

using namespace velicor;
using namespace velicor::screencapture;

constexpr int rate = 30;
const double seconds = benchmarks::unlessBrief(1.0, 0.1);
const std::size_t rounds = benchmarks::unlessBrief<std::size_t>(5, 1);
constexpr DevicePoint corner{40, 40};

// What lies under our window.
enum class Scene { covered, beside, four, blended };
constexpr std::pair<Scene, const char*> scenes[] = {{Scene::covered, "one window fills the frame"},
                                                    {Scene::beside, "one window and the backdrop"},
                                                    {Scene::four, "four windows and the backdrop"},
                                                    {Scene::blended, "the same with alpha and opacity"}};
// How much of the window changes each time.
constexpr std::pair<DeviceRect, const char*> changes[] = {{{20, 20, 40, 40}, "a spot"},
                                                          {{0, 0, 2000, 1200}, "all of it"}};
constexpr std::pair<int, int> sizes[] = {{350, 350}, {640, 400}, {1920, 1080}};

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
void animate(test::XClient& client, xcb_window_t window, const DeviceRect& part,
             const std::function<void()>& each) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < seconds * rate; ++i) {
    std::this_thread::sleep_until(start + std::chrono::microseconds(1000000 / rate) * i);
    client.fill(window, part, static_cast<std::uint32_t>(i));
    each();
  }
}

struct Cost {
  double client = 0;
  double server = 0;
  int frames = 0;
};

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

class Bench {
 public:
  Bench(Scene scene, int width, int height, const DeviceRect& change = {})
      : region_{corner.x, corner.y, width, height},
        change_(change),
        service_(std::move(*makeX11Service(server_.name(), own_))),
        other_(server_.name()),
        ours_(server_.name()) {
    ours_.joinOwn(own_);
    other_.setBackdrop({9});
    if (scene == Scene::covered) window_ = other_.showPattern({20, 20, width + 40, height + 40}, {7});
    if (scene == Scene::beside) window_ = other_.showPattern({20, 20, width / 2, height + 40}, {7});
    if (scene == Scene::four || scene == Scene::blended) showFour(scene == Scene::blended);
    cover_ = ours_.showColour({30, 30, width + 20, height + 20}, test::magenta);
  }

  // What the server spends on the changes alone.
  double baseline() {
    const double before = server_.program().cpuSeconds();
    animate(other_, window_, change_, [] {});
    return server_.program().cpuSeconds() - before;
  }

  Cost stream(double baseline) {
    dispatch::SerialQueue queue("velicor.capture");
    const auto counter = std::make_shared<Counter>();
    const auto stream = start(queue, counter);
    const double server = server_.program().cpuSeconds();
    const double client = threadSeconds("velicor.x11cap");
    animate(other_, window_, change_, [] {});
    const Cost cost{threadSeconds("velicor.x11cap") - client,
                    server_.program().cpuSeconds() - server - baseline, counter->frames};
    if (!QCoro::waitFor(stream->stopCapture())) std::abort();
    return cost;
  }

  Cost rootCopy(double baseline) {
    auto connection = std::move(*x11::Connection::open(server_.name(), own_));
    ServerMemory memory(*connection);
    const auto segment =
        memory.make(static_cast<std::size_t>(region_.width) * static_cast<std::size_t>(region_.height) * 4);
    const auto word = [](int value) { return static_cast<std::uint16_t>(value); };
    const double server = server_.program().cpuSeconds();
    Cost cost;
    animate(other_, window_, change_, [&] {
      const double before = thisThreadSeconds();
      const auto cookie =
          xcb_shm_get_image(connection->raw(), connection->root(), corner.x, corner.y, word(region_.width),
                            word(region_.height), ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP, segment->serverId(), 0);
      if (connection->reply(xcb_shm_get_image_reply, cookie)) ++cost.frames;
      cost.client += thisThreadSeconds() - before;
    });
    cost.server = server_.program().cpuSeconds() - server - baseline;
    return cost;
  }

  // Nothing changes, then only our own window does, 60 times a second.
  void measureStill() {
    dispatch::SerialQueue queue("velicor.capture");
    const auto stream = start(queue, std::make_shared<Counter>());
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const double before = threadSeconds("velicor.x11cap");
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    const double still = threadSeconds("velicor.x11cap");
    for (int i = 0; i < seconds * 60; ++i) {
      ours_.fill(cover_, {0, 0, region_.width, region_.height}, static_cast<std::uint32_t>(i));
      std::this_thread::sleep_for(std::chrono::microseconds(1000000 / 60));
    }
    const double own = threadSeconds("velicor.x11cap");
    std::printf("\nstill screen: client %.3f ms/s; only our own window draws: %.3f ms/s\n",
                (still - before) * 1e3 / seconds, (own - still) * 1e3 / seconds);
  }

 private:
  // Overlapping, in steps; the topmost is the one that changes.
  void showFour(bool blended) {
    for (int i = 0; i < 4; ++i) {
      const DeviceRect place{corner.x + region_.width * i / 8, corner.y + region_.height * i / 8,
                             region_.width * 5 / 8, region_.height * 5 / 8};
      if (!blended) {
        window_ = other_.showPattern(place, {i});
        continue;
      }
      window_ = other_.makeWindow(place, {.alpha = true});
      other_.setColour(window_, 0x80402010);
      if (i % 2 == 1) other_.setNumber(window_, "_NET_WM_WINDOW_OPACITY", 0x80000000);
      other_.map(window_);
    }
    if (blended) other_.takeSelection("_NET_WM_CM_S0");
  }

  std::shared_ptr<Stream> start(dispatch::SerialQueue& queue, const std::shared_ptr<Counter>& counter) {
    const auto content = QCoro::waitFor(service_->shareableContent({}));
    StreamConfiguration configuration;
    configuration.sourceRect = {corner.x, corner.y, static_cast<double>(region_.width),
                                static_cast<double>(region_.height)};
    configuration.width = region_.width;
    configuration.height = region_.height;
    configuration.minimumFrameInterval = {1, rate};
    auto stream = service_->makeStream({content->displays.at(0), {{getpid(), ""}}}, configuration, {});
    const bool added = stream->addStreamOutput(counter, OutputType::screen, queue).has_value();
    if (!added || !QCoro::waitFor(stream->startCapture())) std::abort();
    return stream;
  }

  DeviceRect region_;
  DeviceRect change_;
  test::XServer server_{"2000x1200x24"};
  x11::OwnClients own_;
  std::unique_ptr<Service> service_;
  test::XClient other_;
  test::XClient ours_;
  xcb_window_t window_ = 0;
  xcb_window_t cover_ = 0;
};

double microseconds(double total, const Cost& cost) { return total * 1e6 / std::max(1, cost.frames); }

void measure(Bench& bench, const std::string& scene, int width, int height) {
  std::vector<double> columns[5];
  for (std::size_t round = 0; round < rounds; ++round) {
    const double baseline = bench.baseline();
    const Cost copy = bench.rootCopy(baseline);
    const Cost stream = bench.stream(baseline);
    const double figures[] = {microseconds(copy.client, copy), microseconds(copy.server, copy),
                              microseconds(stream.client, stream), microseconds(stream.server, stream)};
    for (std::size_t i = 0; i < 4; ++i)
      columns[i].push_back(figures[i]);
    columns[4].push_back((figures[2] + figures[3]) / (figures[0] + figures[1]));
  }
  std::printf("| %d × %d, %s | %.0f + %.0f | %.0f + %.0f | %.2f |\n", width, height, scene.c_str(),
              median(columns[0]), median(columns[1]), median(columns[2]), median(columns[3]),
              median(columns[4]));
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  dispatch::MainQueue::shared().attach();
  std::puts("| | root copy, client + server µs | stream, client + server µs | ratio |\n|---|---|---|---|");
  const auto wanted = [&](int place, int value) { return argc <= place || std::atoi(argv[place]) == value; };
  for (const auto& [width, height] : sizes) {
    for (const auto& [scene, name] : scenes) {
      if (!wanted(1, width) || !wanted(2, static_cast<int>(scene))) continue;
      for (const auto& [change, how] : changes) {
        Bench bench(scene, width, height, change);
        measure(bench, std::string(name) + ", " + how, width, height);
      }
    }
  }
  Bench(Scene::covered, 640, 400).measureStill();
  dispatch::MainQueue::shared().detach();
}
