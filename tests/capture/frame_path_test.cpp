// The whole way of a frame, from the X server to the published pictures: what it allocates, and what happens
// when a part of it stands still.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <future>
#include <vector>

#include <QCoroTask>

#include "analysis/kernels/default_library.h"
#include "analysis/metal_processor.h"
#include "capture/capture_manager.h"
#include "platform/base/recycling.h"
#include "platform/gpu/test_devices.h"
#include "platform/screencapture/x11/service.h"
#include "support/allocation_count.h"
#include "support/main_loop.h"
#include "support/x_client.h"
#include "support/x_server.h"

namespace velicor::test {
namespace {

using namespace std::chrono_literals;

constexpr int rate = 100;
constexpr int rootHeight = 800;
constexpr int segments = 3;  // frames that may be in use at once

// Draws each preview, as the loupe's view does.
class Drawer {
 public:
  explicit Drawer(const std::shared_ptr<gpu::Device>& device)
      : queue_(device->makeCommandQueue()), drawables_(device->makeDrawables()) {
    const auto library = defaultLibrary(device);
    blit_ = device->makeRenderPipeline(
        {library->function("blitVertex"), library->function("blitFragment"), gpu::PixelFormat::bgra8Unorm});
  }

  void draw(const std::shared_ptr<gpu::Texture>& texture) {
    const auto drawable = drawables_->next(texture->width(), texture->height());
    if (!drawable) return;
    const auto commands = queue_->makeCommandBuffer();
    const auto encoder = commands->makeRenderEncoder({drawable->texture(), {}});
    encoder->setPipeline(blit_);
    encoder->setVertexBytes(std::as_bytes(std::span(scale_)), 0);
    encoder->setFragmentTexture(texture, 0);
    encoder->drawTriangles(0, 3);
    encoder->endEncoding();
    commands->present(drawable);
    commands->commit();
  }

 private:
  std::shared_ptr<gpu::CommandQueue> queue_;
  std::shared_ptr<gpu::Drawables> drawables_;
  std::shared_ptr<gpu::RenderPipeline> blit_;
  std::array<float, 2> scale_{1, 1};
};

class FramePathTest : public testing::Test {
 protected:
  explicit FramePathTest(std::shared_ptr<gpu::Device> device = gpu::makeNativeDevice())
      : device_(std::move(device)) {
    ours_.joinOwn(own_);
    screen_.displayID = QCoro::waitFor(service_->shareableContent({}))->displays.at(0).displayID;
    screen_.frame = {0, 0, 1280, rootHeight};
    window_ = other_.showColour({50, 50, 500, 400}, 0);
    ours_.showColour({90, 90, 340, 260}, magenta);
    processor_->onPreview = [this] {
      ++previews_;
      drawer_.draw(processor_->preview());
    };
    processor_->onScopes = [this] { ++scopes_; };
    session_.setOnFrame([this](const PixelBufferRef& frame) {
      ++frames_;
      newest_ = std::to_integer<int>(frame->bytes()[0]);
      processor_->ingest(frame);
    });
    session_.setFps(rate);
    session_.updateRegion({100, rootHeight - 100 - 240, 320, 240}, screen_);
    EXPECT_TRUE(waitUntil([&] { return frames_ >= 3 && previews_ == frames_; }));
  }
  ~FramePathTest() override {
    session_.setOnFrame({});
    EXPECT_TRUE(waitUntil([this] { return service_.use_count() == 2; })) << "nothing of the session is under way";
  }

  void paint(int blue) { other_.fill(window_, {0, 0, 500, 400}, static_cast<std::uint32_t>(blue)); }

  // The window changes, and each picture is analysed before the next one comes.
  void drive(int pictures) {
    for (int i = 0; i < pictures; ++i) {
      const int blue = 1 + i % 250;
      paint(blue);
      ASSERT_TRUE(waitUntil([&] { return newest_ == blue && previews_ == frames_; }));
    }
  }

  XServer server_;
  x11::OwnClients own_;
  std::shared_ptr<screencapture::Service> service_ =
      std::move(*screencapture::makeX11Service(server_.name(), own_));
  XClient other_{server_.name()};
  XClient ours_{server_.name()};
  xcb_window_t window_ = 0;
  desktop::Screen screen_;
  std::shared_ptr<gpu::Device> device_;
  std::shared_ptr<MetalProcessor> processor_ = MetalProcessor::create(device_);
  Drawer drawer_{device_};
  std::atomic<int> frames_{0};
  std::atomic<int> newest_{-1};
  int previews_ = 0;
  int scopes_ = 0;
  CaptureManager session_{service_, dispatch::systemClock()};
};

// Holds the device up, behind the work that it has.
class DeviceStop {
 public:
  explicit DeviceStop(gpu::Device& device) {
    const auto commands = device.makeCommandQueue()->makeCommandBuffer();
    commands->addCompletedHandler(
        [released = release_.get_future().share()](const gpu::CommandBuffer&) { released.wait(); });
    commands->commit();
  }
  ~DeviceStop() { release_.set_value(); }
  DeviceStop(const DeviceStop&) = delete;
  DeviceStop& operator=(const DeviceStop&) = delete;

 private:
  std::promise<void> release_;
};

struct CountedDevice {
  const char* name;
  std::shared_ptr<gpu::Device> (*make)();
  std::vector<const char*> threads;
};

// Without the validation layer, which allocates on the threads that it watches. Loader and driver are C, so
// that the operator which is counted is called by us alone.
std::shared_ptr<gpu::Device> makeBareVulkanDevice() {
  gpu::test::makeCheckedVulkanDevice();  // keeps the driver loaded
  gpu::VulkanOptions options;
  options.softwareToo = true;
  return gpu::makeVulkanDevice(std::move(options));
}

class AllocationTest : public FramePathTest, public testing::WithParamInterface<CountedDevice> {
 protected:
  AllocationTest() : FramePathTest(GetParam().make()) {}
};

TEST_P(AllocationTest, AFrameTakesNoMemoryOnItsWay) {
  processor_->scopeDivider = 2;
  // As much at once as there can be. The second time, what the stop itself took serves an analysis.
  const auto frame = std::make_shared<PixelBuffer>(320, 240);
  for (int round = 0; round < 2; ++round) {
    auto stop = std::make_unique<DeviceStop>(*device_);
    for (int blue = 1; blue <= 20 || frames_ - previews_ < segments; ++blue) {
      ASSERT_LT(blue, 1000);
      paint(blue % 250);
      waitUntil([] { return false; }, 15ms);
    }
    for (int i = 0; i < 8; ++i, ++frames_)
      processor_->ingest(frame);
    stop = nullptr;
    ASSERT_TRUE(waitUntil([&] { return previews_ == frames_; }));
  }
  {
    // Where nothing has changed, the last picture may be out more than once.
    std::vector<PixelBufferRef> out(2 * segments);
    for (PixelBufferRef& each : out)
      each = makeRecycled<PixelBuffer>(1, 1);
  }
  drive(20);
  const int before = frames_;
  const int scopes = scopes_;
  startCounting();
  drive(120);
  const auto counts = stopCounting();
  ASSERT_GE(frames_ - before, 120);
  ASSERT_GE(scopes_ - scopes, 59);
  EXPECT_EQ(counts.at("velicor.x11cap"), 0);
  EXPECT_EQ(counts.at("velicor.capture"), 0);
  for (const char* thread : GetParam().threads)
    EXPECT_EQ(counts.at(thread), 0) << thread;
}

INSTANTIATE_TEST_SUITE_P(
    Devices, AllocationTest,
    testing::Values(CountedDevice{"native", gpu::makeNativeDevice, {"velicor.device"}},
                    CountedDevice{"vulkan", makeBareVulkanDevice, {"velicor.gpu", "velicor.device"}}),
    [](const auto& device) { return device.param.name; });

// Calls of reanalyze() do not pile up either.
TEST_F(FramePathTest, SkipsFramesWhileTheDeviceStands) {
  processor_->scopeDivider = 1'000'000;
  drive(5);
  auto stop = std::make_unique<DeviceStop>(*device_);
  const int frames = frames_;
  const int scopes = scopes_;
  for (int i = 1; i <= 60; ++i) {
    paint(i);
    processor_->reanalyze();
    waitUntil([] { return false; }, 10ms);
  }
  EXPECT_LE(frames_ - frames, segments) << "no more than there are";
  EXPECT_GE(frames_ - frames, 1);
  EXPECT_EQ(scopes_, scopes);
  stop = nullptr;
  EXPECT_TRUE(waitUntil([&] { return newest_ == 60 && previews_ >= frames_; }));
  settle();
  EXPECT_LE(scopes_ - scopes, 2);
  EXPECT_GE(scopes_ - scopes, 1);
  EXPECT_LE(frames_ - frames, 12) << "what was missed is not made up for";
}

TEST_F(FramePathTest, MainThreadLivesWhileTheServerStands) {
  drive(5);
  paint(6);
  server_.program().freeze();
  const int frames = frames_;
  for (int i = 0; i < 30; ++i) {
    session_.updateRegion({100.0 + i, rootHeight - 100 - 240, 320, 240}, screen_);
    session_.setFps(rate + i % 2);
    processor_->reanalyze();
    waitUntil([] { return false; }, 10ms);
  }
  session_.stop();
  settle();
  EXPECT_LE(frames_ - frames, segments) << "those that were on their way";
  server_.program().resume();
  ASSERT_TRUE(waitUntil([&] { return !session_.isRunning(); }));
  session_.resume();
  ASSERT_TRUE(waitUntil([&] { return session_.isRunning(); }));
  paint(77);
  EXPECT_TRUE(waitUntil([&] { return newest_ == 77; }));
  settle();
  EXPECT_LE(frames_ - frames, 15) << "what was missed is not made up for";
}

}  // namespace
}  // namespace velicor::test
