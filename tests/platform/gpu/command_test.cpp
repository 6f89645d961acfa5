// When work runs, in which order, and who hears of it.
#include <atomic>
#include <future>
#include <thread>

#include <gmock/gmock.h>

#include "platform/gpu/device_fixture.h"

namespace velicor::gpu::test {
namespace {

using testing::ElementsAre;
using CommandTest = DeviceTest;

TEST_P(CommandTest, TheCommitsOfAllQueuesAreOneOrder) {
  const auto number = device_->makeBuffer(4, StorageMode::shared);
  numberIn(*number) = 0;
  const auto other = device_->makeCommandQueue();
  std::uint32_t expected = 0;
  std::shared_ptr<CommandBuffer> last;
  for (int i = 0; i < 30; ++i) {
    // Made in one order, committed in the other.
    const auto second = numberWork(*queue_, "twice", number);
    const auto first = numberWork(*other, "addOne", number);
    first->commit();
    second->commit();
    expected = (expected + 1) * 2;
    last = second;
  }
  last->waitUntilCompleted();
  EXPECT_EQ(numberIn(*number), expected);
}

TEST_P(CommandTest, CommitsFromSeveralThreadsAllRun) {
  const auto number = device_->makeBuffer(4, StorageMode::shared);
  numberIn(*number) = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      const auto queue = device_->makeCommandQueue();
      for (int k = 0; k < 50; ++k)
        numberWork(*queue, "addOne", number)->commit();
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  const auto last = numberWork(*queue_, "addOne", number);
  last->commit();
  last->waitUntilCompleted();
  EXPECT_EQ(numberIn(*number), 201U);
}

TEST_P(CommandTest, HandlersRunInOrderOnADeviceThreadBeforeTheWaitEnds) {
  const auto number = device_->makeBuffer(4, StorageMode::shared);
  numberIn(*number) = 41;
  std::vector<std::uint32_t> seen;
  std::thread::id thread;
  const auto commands = numberWork(*queue_, "addOne", number);
  commands->addCompletedHandler([&](const CommandBuffer& finished) {
    thread = std::this_thread::get_id();
    EXPECT_EQ(finished.status(), CommandBuffer::Status::completed);
    seen.push_back(numberIn(*number));
  });
  commands->addCompletedHandler([&](const CommandBuffer&) { seen.push_back(0); });
  EXPECT_EQ(commands->status(), CommandBuffer::Status::recording);
  commands->commit();
  commands->waitUntilCompleted();
  EXPECT_THAT(seen, ElementsAre(42, 0));
  EXPECT_NE(thread, std::this_thread::get_id());
}

TEST_P(CommandTest, AnUncommittedBufferForgetsItsWorkAndHandlers) {
  const auto number = device_->makeBuffer(4, StorageMode::shared);
  numberIn(*number) = 5;
  const auto token = std::make_shared<int>();
  auto dropped = numberWork(*queue_, "addOne", number);
  dropped->addCompletedHandler([token](const CommandBuffer&) { FAIL() << "never committed"; });
  dropped = nullptr;
  EXPECT_EQ(token.use_count(), 1);
  const auto committed = numberWork(*queue_, "twice", number);
  committed->commit();
  committed->waitUntilCompleted();
  EXPECT_EQ(numberIn(*number), 10U);
}

// The device then ends on its own thread, under its last handler.
TEST_P(CommandTest, EverythingMayBeLetGoWhileWorkIsUnderWay) {
  for (int round = 0; round < 20; ++round) {
    std::promise<void> letGo;
    std::promise<std::uint32_t> result;
    auto number = device_->makeBuffer(4, StorageMode::shared);
    numberIn(*number) = 0;
    for (int i = 0; i < 10; ++i)
      numberWork(*queue_, "addOne", number)->commit();
    auto last = numberWork(*queue_, "twice", number);
    last->addCompletedHandler([&, kept = number](const CommandBuffer&) {
      letGo.get_future().wait();
      result.set_value(numberIn(*kept));
    });
    last->commit();
    last = nullptr;
    number = nullptr;
    library_ = nullptr;
    queue_ = nullptr;
    device_ = nullptr;
    letGo.set_value();
    EXPECT_EQ(result.get_future().get(), 20U);
    device_ = GetParam().make();
    queue_ = device_->makeCommandQueue();
    library_ = device_->makeLibrary(testKernels());
  }
}

INSTANTIATE_TEST_SUITE_P(Devices, CommandTest, testing::ValuesIn(allDevices()), deviceName);

}  // namespace
}  // namespace velicor::gpu::test
