#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "platform/dispatch/clock.h"
#include "platform/dispatch/main_queue.h"
#include "platform/dispatch/serial_queue.h"
#include "platform/dispatch/task_chain.h"
#include "support/main_loop.h"

namespace velicor::dispatch {
namespace {

using namespace std::chrono_literals;

TEST(MainQueueTest, RunsJobsOfAllThreadsInOrderOnTheMainThread) {
  constexpr int jobsPerThread = 500;
  std::vector<int> seen[2];
  std::vector<std::thread> threads;
  for (int t = 0; t < 2; ++t) {
    threads.emplace_back([t, &seen] {
      for (int i = 0; i < jobsPerThread; ++i) {
        MainQueue::shared().async([t, i, &seen] {
          EXPECT_TRUE(MainQueue::shared().isCurrent());
          seen[t].push_back(i);
        });
      }
    });
  }
  EXPECT_TRUE(test::waitUntil([&] { return seen[0].size() + seen[1].size() == 2 * jobsPerThread; }));
  for (std::thread& thread : threads) thread.join();
  for (const std::vector<int>& order : seen) EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(MainQueueTest, AJobQueuedByAJobWaitsForTheNextTurn) {
  std::string order;
  MainQueue::shared().async([&] {
    MainQueue::shared().async([&] { order += "c"; });
    order += "a";
  });
  MainQueue::shared().async([&] { order += "b"; });
  test::settle();
  EXPECT_EQ(order, "abc");
}

TEST(SerialQueueTest, KeepsOrderAndFinishesWhatIsQueuedBeforeADrainOrItsEnd) {
  std::vector<int> seen;
  {
    SerialQueue queue("velicor.test");
    for (int i = 0; i < 100; ++i) queue.async([i, &seen] { seen.push_back(i); });
    queue.drain();
    EXPECT_EQ(seen.size(), 100u);
    for (int i = 100; i < 200; ++i) queue.async([i, &seen] { seen.push_back(i); });
  }
  ASSERT_EQ(seen.size(), 200u);
  EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
}

TEST(ClockTest, TheSystemClockNeverRunsAJobEarly) {
  Clock& clock = systemClock();
  const Instant start = clock.now();
  Instant end{};
  clock.callAfter(15ms, [&] { end = clock.now(); });
  ASSERT_TRUE(test::waitUntil([&] { return end != Instant{}; }));
  EXPECT_GE(end - start, 15ms);
}

QCoro::Task<> receive(Completion<int> completion, int* target) { *target = co_await completion; }

TEST(CompletionTest, DeliversAcrossThreadsOnTheMainThreadAndKeepsTheFirstValue) {
  const Completion<int> completion;
  int value = 0;
  receive(completion, &value);
  std::thread([completion] {
    completion.resolve(7);
    completion.resolve(8);
  }).join();
  EXPECT_EQ(value, 0) << "continues through the main queue only";
  test::settle();
  EXPECT_EQ(value, 7);
}

QCoro::Task<> step(Completion<void> gate, std::string* order, std::string name) {
  *order += name + "( ";
  co_await gate;
  *order += name + ") ";
}

TEST(TaskChainTest, OperationsNeverOverlapAndNeverBeginInsideEnqueue) {
  std::string order;
  const Completion<void> first, second;
  TaskChain chain;
  chain.enqueue([&] { return step(first, &order, "a"); });
  EXPECT_EQ(order, "");
  test::settle();
  chain.enqueue([&] { return step(second, &order, "b"); });
  second.resolve();
  test::settle();
  EXPECT_EQ(order, "a( ");
  first.resolve();
  test::settle();
  EXPECT_EQ(order, "a( a) b( b) ");
}

TEST(TaskChainTest, WhatHasNotBegunIsDroppedWithTheChain) {
  std::string order;
  const Completion<void> gate;
  {
    TaskChain chain;
    chain.enqueue([&] { return step(gate, &order, "a"); });
    test::settle();
    chain.enqueue([&] { return step(gate, &order, "b"); });
  }
  gate.resolve();
  test::settle();
  EXPECT_EQ(order, "a( a) ");
}

}  // namespace
}  // namespace velicor::dispatch
