#include <algorithm>

#include "capture/capture_fixture.h"
#include "support/main_loop.h"

namespace velicor {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr auto repaired = "capture info: content filter repaired: Velicor now excluded";

// This program is not listed until a test says so.
class FilterRepairTest : public test::CaptureFixture {
 protected:
  FilterRepairTest() { service->content = contentWithoutUs(); }

  // Runs on the left display since now; the first attempt at repair has just failed.
  void startUnexcluded() {
    report(100, 100, left);
    clock.advance(900ms);
    ASSERT_TRUE(session->isRunning());
  }

  const screencapture::ShareableContent listed = service->content;
};

TEST_F(FilterRepairTest, StartsUnexcludedAndLeavesOurWindowsOutOnceTheyAreListed) {
  startUnexcluded();
  EXPECT_THAT(journal(), ElementsAre("query", "query", "query", "query", "query", "query", "query", "make 7",
                                     "start", "query"));
  EXPECT_THAT(log.lines(),
              ElementsAre("capture info: filter excludes 0 own app(s), 6 extra queries",
                          "capture error: Velicor not listed as shareable — starting unexcluded, will repair",
                          "capture info: capture running on display 7"));
  clock.advance(999ms);
  EXPECT_THAT(journal(), IsEmpty());
  service->content = listed;
  service->changed = tl::unexpected(broken());  // refused updates don't matter
  clock.advance(1ms);
  EXPECT_THAT(journal(), ElementsAre("query", "filter", "configure"));
  EXPECT_EQ(service->lastStream().filter.excludedApplications.size(), 1u);
  EXPECT_TRUE(log.contains(repaired));
  clock.advance(60s);
  EXPECT_THAT(journal(), IsEmpty());
}

TEST_F(FilterRepairTest, AFailedQueryOrAMissingDisplayIsAFailedAttempt) {
  startUnexcluded();
  service->content = listed;
  service->contents = {tl::unexpected(broken()), screencapture::ShareableContent{{{8}}, listed.applications}};
  clock.advance(2s);
  EXPECT_FALSE(log.contains(repaired));
  clock.advance(1s);
  EXPECT_TRUE(log.contains(repaired));
}

TEST_F(FilterRepairTest, EndsWhileSuspendedAndGivesUpAfterThirtyAttemptsAfterwards) {
  startUnexcluded();
  session->stop();
  test::settle();
  journal();
  clock.advance(5min);
  EXPECT_THAT(journal(), IsEmpty());
  session->resume();
  clock.advance(5min);
  EXPECT_EQ(std::ranges::count(journal(), "query"), 7 + 30);
  EXPECT_TRUE(session->isRunning());
}

TEST_F(FilterRepairTest, ANewStreamIsNotTouchedByAnAttemptForTheOldOne) {
  startUnexcluded();
  service->content = listed;
  service->queryGate.close();
  clock.advance(1s);
  report(1200, 100, right);
  service->queryGate.open();
  clock.advance(5min);
  EXPECT_THAT(journal(), Not(Contains("filter")));
  EXPECT_EQ(clock.waiting(), 0u);
}

// The old stream's filter is being changed when the new one has started, without us being listed again.
TEST_F(FilterRepairTest, ANewStreamIsRepairedItself) {
  startUnexcluded();
  service->content = listed;
  service->updateGate.close();
  clock.advance(1s);
  service->content = contentWithoutUs();
  report(1200, 100, right);
  clock.advance(900ms);
  service->updateGate.open();
  test::settle();
  EXPECT_FALSE(log.contains(repaired));
  service->content = listed;
  clock.advance(1s);
  EXPECT_EQ(service->lastStream().filter.excludedApplications.size(), 1u);
  EXPECT_TRUE(log.contains(repaired));
}

TEST_F(FilterRepairTest, OneSequenceServesAllStreams) {
  startUnexcluded();
  report(1200, 100, right);
  clock.advance(900ms);
  journal();
  clock.advance(2s);
  EXPECT_EQ(std::ranges::count(journal(), "query"), 2);
  service->content = listed;
  clock.advance(1s);
  EXPECT_EQ(service->lastStream().filter.display.displayID, 8u);
  EXPECT_TRUE(log.contains(repaired));
}

}  // namespace
}  // namespace velicor
