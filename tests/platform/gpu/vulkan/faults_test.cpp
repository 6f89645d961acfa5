// Every call that can fail fails once, in every way that it can. VELICOR_LONG_TESTS in the environment: every
// call of a whole life, else the first of each function. A device has two threads: the same count may be
// another call in the next life.
#include <cstdlib>
#include <cstring>
#include <set>

#include <gmock/gmock.h>
#include <sys/mman.h>

#include "platform/gpu/device_fixture.h"
#include "platform/gpu/vulkan/fault_at_call.h"
#include "support/log_recorder.h"
#include "support/main_loop.h"

namespace velicor::gpu::test {
namespace {

using velicor::test::waitUntil;

constexpr int width = 640;
constexpr int height = 512;
constexpr std::size_t bytesPerRow = 4 * width;

// A picture of one colour, in memory that a device may read where it lies.
PixelBufferRef makeFrame(std::uint8_t value) {
  constexpr std::size_t length = bytesPerRow * height;
  void* const memory = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  std::memset(memory, value, length);
  const std::shared_ptr<std::byte> mapping(static_cast<std::byte*>(memory),
                                           [](std::byte* bytes) { munmap(bytes, length); });
  return std::make_shared<PixelBuffer>(width, height, bytesPerRow, mapping.get(), nullptr, mapping);
}

// What cannot be had at once is had later: one call fails, not the next.
template <typename Make>
auto had(Make make) {
  auto made = make();
  waitUntil([&] { return made || (made = make()); });
  if (!made) throw std::runtime_error("it can't be had again");
  return made;
}

VulkanOptions options() {
  VulkanOptions options;
  options.softwareToo = true;
  options.rebuildPause = std::chrono::milliseconds(0);
  options.entryPoint = FaultAtCall::entryPoint();
  options.onPassTimes = [](std::span<const PassTime>) {};
  options.onComplaint = [](std::string_view complaint) { ADD_FAILURE() << complaint; };
  return options;
}

class Life : private Workbench {
 public:
  explicit Life(std::shared_ptr<Device> device) : Workbench(std::move(device)) {}

  // Frames come in, are worked on, drawn and read back, each right or not at all.
  void live() {
    for (std::uint8_t value = 10; value <= 30; value += 10) {
      const PixelBufferRef frame = makeFrame(value);
      EXPECT_TRUE(waitUntil([&] { return analyses(frame, value); }));
    }
  }

 private:
  bool analyses(const PixelBufferRef& frame, std::uint8_t value) {
    cache_->flush();
    const auto wrapped = cache_->texture(frame, PixelFormat::bgra8Unorm, width, height);
    const auto drawable = drawables_->next(64, 48);
    const auto commands = queue_->makeCommandBuffer();
    if (!wrapped || !drawable || !commands) return false;
    numberIn(*number_) = value;
    const auto compute = commands->makeComputeEncoder();
    compute->setPipeline(twice_);
    compute->setBuffer(number_, 0, 0);
    compute->dispatchThreadgroups({}, {});
    compute->setPipeline(add_);
    compute->setTexture(wrapped, 0);
    compute->setTexture(sum_, 1);
    compute->setValue(std::array{1.0F / 255, 0.0F, 0.0F, 1.0F}, 2);
    compute->dispatchThreadgroups({width / 16, height / 16, 1}, {16, 16, 1});
    compute->endEncoding();
    draw(*commands, drawable->texture());
    const auto blit = commands->makeBlitEncoder();
    blit->copy({.source = sum_,
                .sourceOrigin = {},
                .size = sum_->size(),
                .destination = read_,
                .destinationOrigin = {}});
    blit->endEncoding();
    commands->present(drawable);
    commands->commit();
    commands->waitUntilCompleted();
    if (commands->status() != CommandBuffer::Status::completed) return false;
    expectResults(value);
    return true;
  }

  void draw(CommandBuffer& commands, const std::shared_ptr<Texture>& target) {
    constexpr std::array<NativeVertex, 3> corner{{{-1, -1, 0, 0}, {3, -1, 2, 0}, {-1, 3, 0, 2}}};
    const auto encoder = commands.makeRenderEncoder({target, {1, 1, 1, 1}});
    encoder->setPipeline(shows_);
    encoder->setVertexBytes(std::as_bytes(std::span(corner)), 0);
    encoder->drawTriangles(0, 3);
    encoder->endEncoding();
  }

  void expectResults(std::uint8_t value) {
    EXPECT_EQ(numberIn(*number_), 2U * value);
    std::vector<std::byte> pixels(bytesPerRow * height);
    read_->getBytes(pixels, bytesPerRow, {{}, read_->size()});
    const auto number = [](std::byte byte) { return std::to_integer<int>(byte); };
    for (const std::size_t at : {std::size_t{0}, pixels.size() - 4}) {
      EXPECT_EQ(number(pixels[at]), value + 1);
      EXPECT_EQ(number(pixels[at + 1]), value);
    }
    const auto picture = drawables_->front();
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(number(picture->bytes()[0]), 0) << "coordinates, not the ground";
  }

  std::shared_ptr<ComputePipeline> twice_ = had([this] { return pipeline("twice"); });
  std::shared_ptr<ComputePipeline> add_ = had([this] { return pipeline("addColor"); });
  std::shared_ptr<RenderPipeline> shows_ = had([this] { return coordinatesPipeline(); });
  std::shared_ptr<Buffer> number_ = had([this] { return device_->makeBuffer(4, StorageMode::shared); });
  std::shared_ptr<Texture> sum_ = had([this] { return texture(width, height, StorageMode::deviceOnly); });
  std::shared_ptr<Texture> read_ = had([this] { return texture(width, height); });
  std::shared_ptr<TextureCache> cache_ = had([this] { return device_->makeTextureCache(); });
  std::shared_ptr<Drawables> drawables_ = device_->makeDrawables();
};

// Whether there was a device at all: where there is none, there is a line about it, and the native one
// serves.
bool liveOnce() {
  const velicor::test::LogRecorder log;
  const auto device = makeVulkanDevice(options());
  if (device) {
    Life(device).live();
  } else {
    EXPECT_THAT(log.lines(), testing::Not(testing::IsEmpty()));
  }
  return device != nullptr;
}

TEST(VulkanFaults, AnyCallMayFailOnce) {
  makeCheckedVulkanDevice();
  const FaultAtCall none(0);
  ASSERT_TRUE(liveOnce());
  const std::vector<std::string> calls = FaultAtCall::calls();
  const bool all = std::getenv("VELICOR_LONG_TESTS") != nullptr;
  std::set<std::string> tried;
  int lives = 0, withoutDevice = 0;
  for (std::size_t call = 1; call <= calls.size(); ++call) {
    const std::string& function = calls[call - 1];
    if (!tried.insert(function).second && !all) continue;
    for (std::size_t error = 0; error < FaultAtCall::errorsOf(function).size(); ++error) {
      SCOPED_TRACE(function + ", call " + std::to_string(call) + ", error " +
                   std::to_string(FaultAtCall::errorsOf(function)[error]));
      const FaultAtCall fault(call, error);
      ++lives;
      withoutDevice += liveOnce() ? 0 : 1;
      EXPECT_GE(FaultAtCall::calls().size(), call) << "it was reached";
    }
  }
  RecordProperty("functions", static_cast<int>(tried.size()));
  RecordProperty("calls", static_cast<int>(calls.size()));
  RecordProperty("lives", lives);
  RecordProperty("withoutDevice", withoutDevice);
}

}  // namespace
}  // namespace velicor::gpu::test
