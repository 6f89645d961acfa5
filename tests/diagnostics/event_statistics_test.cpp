#include "diagnostics/event_statistics.h"

#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "support/main_loop.h"
#include "support/manual_clock.h"

namespace velicor {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class EventStatisticsTest : public testing::Test {
 protected:
  void tickTimes(const char* name, int count) {
    for (int i = 0; i < count; ++i)
      statistics_.tick(name);
  }

  std::vector<std::string> reports_;
  dispatch::Duration stall_{};  // that begins with the next report
  test::ManualClock clock_;
  EventStatistics statistics_{clock_, [this](const std::string& counts) {
                                reports_.push_back(counts);
                                clock_.pass(std::exchange(stall_, {}));
                              }};
};

TEST_F(EventStatisticsTest, ReportsEverySecondFromTheFirstEventOn) {
  clock_.advance(5s);
  EXPECT_THAT(reports_, IsEmpty());
  tickTimes("drawn", 3);
  tickTimes("captured", 10);
  clock_.advance(999ms);
  EXPECT_THAT(reports_, IsEmpty());
  clock_.advance(1ms);
  EXPECT_THAT(reports_, ElementsAre("captured=10 drawn=3"));
  clock_.advance(1s);
  tickTimes("drawn", 1);
  clock_.advance(1s);
  EXPECT_THAT(reports_, ElementsAre("captured=10 drawn=3", "", "drawn=1"));
  EXPECT_EQ(clock_.waiting(), 1U);
}

TEST_F(EventStatisticsTest, KeepsItsBeatAfterAStall) {
  tickTimes("drawn", 1);
  stall_ = 2400ms;
  clock_.advance(1s);
  EXPECT_THAT(reports_, ElementsAre("drawn=1")) << "and none for the time that was missed";
  clock_.advance(599ms);
  EXPECT_EQ(reports_.size(), 1U);
  clock_.advance(1ms);
  EXPECT_EQ(reports_.size(), 2U);
}

TEST_F(EventStatisticsTest, CountsFromSeveralThreadsWithOneTimer) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([this] { tickTimes("captured", 1000); });
  for (std::thread& thread : threads)
    thread.join();
  clock_.advance(1s);
  EXPECT_THAT(reports_, ElementsAre("captured=4000"));
}

}  // namespace
}  // namespace velicor
