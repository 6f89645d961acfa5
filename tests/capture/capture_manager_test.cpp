#include "capture/capture_manager.h"

#include <atomic>
#include <thread>

#include <unistd.h>

#include "capture/capture_fixture.h"
#include "support/main_loop.h"

namespace velicor {
namespace {

using namespace std::chrono_literals;
using screencapture::FrameStatus;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto permissionRequired =
    "Screen Recording permission is required.\nEnable Velicor in System Settings > Privacy & Security > "
    "Screen & "
    "System Audio Recording, then relaunch Velicor.";
constexpr auto permissionDeclined =
    "Screen Recording permission was declined.\nEnable Velicor in System Settings > Privacy & Security > "
    "Screen & "
    "System Audio Recording, then relaunch Velicor.";

class CaptureManagerTest : public test::CaptureFixture {
 protected:
  // The stream that runs is known to be the left display's.
  void expectMovesConfigure() {
    journal();
    clock.advance(1s);
    journal();
    report(140, 100, left);
    clock.advance(50ms);
    EXPECT_THAT(journal(), ElementsAre("configure"));
  }
};

TEST_F(CaptureManagerTest, TheFirstRegionStartsCaptureOfItWithoutOurWindows) {
  report(100, 100, left);
  EXPECT_THAT(journal(), ElementsAre("query", "make 7", "start"));
  EXPECT_TRUE(session->isRunning());
  EXPECT_EQ(lastError(), "none");
  EXPECT_THAT(service->lastStream().filter.excludedApplications,
              ElementsAre(screencapture::RunningApplication{getpid(), ""}));
  EXPECT_EQ(service->lastStream().configurations.front().sourceRect, (DisplayRect{100, 500, 300, 200}));
  EXPECT_THAT(log.lines(), ElementsAre("capture info: filter excludes 1 own app(s), 0 extra queries",
                                       "capture info: capture running on display 7"));
}

TEST_F(CaptureManagerTest, RegionsReportedDuringTheStartAreUsedByIt) {
  service->queryGate.close();
  report(100, 100, left);
  report(200, 300, left);
  EXPECT_EQ(clock.waiting(), 0u);
  service->queryGate.open();
  test::settle();
  EXPECT_THAT(journal(), ElementsAre("query", "make 7", "start"));
  EXPECT_EQ(service->lastStream().configurations.front().sourceRect, (DisplayRect{200, 300, 300, 200}));
}

TEST_F(CaptureManagerTest, RegionsReportedWhileTheStreamStartsAreAppliedOnceItRuns) {
  service->startGate.close();
  report(100, 100, left);
  test::settle();
  report(200, 300, left);
  service->startGate.open();
  test::settle();
  EXPECT_THAT(journal(), ElementsAre("query", "make 7", "start", "configure"));
  EXPECT_EQ(service->lastStream().configurations.back().sourceRect, (DisplayRect{200, 300, 300, 200}));
}

TEST_F(CaptureManagerTest, ManyRegionsBecomeOneUpdateWithTheLast) {
  startOnLeft();
  for (int i = 1; i <= 10; ++i) {
    report(100 + i, 100, left);
    clock.advance(4ms);
  }
  EXPECT_THAT(journal(), IsEmpty());
  clock.advance(10ms);
  EXPECT_THAT(journal(), ElementsAre("configure"));
  EXPECT_EQ(service->lastStream().configurations.back().sourceRect, (DisplayRect{110, 500, 300, 200}));

  // The next move is a new round; a refused update is no failure of the capture.
  service->changed = tl::unexpected(broken());
  report(50, 100, left);
  clock.advance(50ms);
  EXPECT_THAT(journal(), ElementsAre("configure"));
  EXPECT_TRUE(session->isRunning());
  EXPECT_EQ(lastError(), "none");
}

TEST_F(CaptureManagerTest, TheFrameRateIsReappliedToTheRunningStream) {
  session->setFps(30);
  test::settle();
  EXPECT_THAT(journal(), IsEmpty());
  startOnLeft();
  session->setFps(10);
  test::settle();
  EXPECT_THAT(journal(), ElementsAre("configure"));
  EXPECT_EQ(service->lastStream().configurations.front().minimumFrameInterval.timescale, 30);
  EXPECT_EQ(service->lastStream().configurations.back().minimumFrameInterval.timescale, 10);
}

TEST_F(CaptureManagerTest, AnotherDisplayStopsTheFirstStreamAndStartsTheNext) {
  startOnLeft();
  service->changed = tl::unexpected(broken());  // a failure to stop changes nothing
  report(1200, 100, right);
  EXPECT_THAT(journal(), ElementsAre("stop", "query", "make 8", "start"));
  EXPECT_EQ(service->streams.front()->stream, nullptr);
  EXPECT_EQ(service->lastStream().configurations.front().sourceRect, (DisplayRect{200, 500, 300, 200}));
  EXPECT_EQ(service->lastStream().configurations.front().width, 600);
  EXPECT_TRUE(session->isRunning());
}

TEST_F(CaptureManagerTest, OperationsNeverOverlap) {
  service->startGate.close();
  report(100, 100, left);
  report(1200, 100, right);
  report(100, 100, left);
  session->stop();
  test::settle();
  EXPECT_THAT(journal(), ElementsAre("query", "make 7", "start"));
  service->startGate.open();
  test::settle();
  EXPECT_THAT(journal(),
              ElementsAre("stop", "query", "make 8", "start", "stop", "query", "make 7", "start", "stop"));
  EXPECT_FALSE(session->isRunning());
}

TEST_F(CaptureManagerTest, WaitsForThisProgramToBeListed) {
  service->contents = {contentWithoutUs(), contentWithoutUs()};
  report(100, 100, left);
  clock.advance(149ms);
  EXPECT_THAT(journal(), ElementsAre("query"));
  clock.advance(151ms);
  EXPECT_THAT(journal(), ElementsAre("query", "query", "make 7", "start"));
  EXPECT_TRUE(log.contains("capture info: filter excludes 1 own app(s), 2 extra queries"));
}

TEST_F(CaptureManagerTest, RetriesThreeTimesThenTellsTheUser) {
  service->content.displays = {{8}};
  report(100, 100, left);
  EXPECT_EQ(lastError(), "none");
  for (int retry = 1; retry <= 3; ++retry) {
    journal();
    clock.advance(399ms);
    EXPECT_THAT(journal(), IsEmpty()) << retry;
    clock.advance(1ms);
    EXPECT_THAT(journal(), ElementsAre("query")) << retry;
  }
  EXPECT_EQ(lastError(), "Capture failed: Display not found");
  EXPECT_FALSE(session->isRunning());
  clock.advance(10s);
  EXPECT_THAT(journal(), IsEmpty());

  // A loupe move tries once more, but has no further retries until a start succeeds.
  report(120, 100, left);
  clock.advance(10s);
  EXPECT_THAT(journal(), ElementsAre("query"));
  service->content.displays = {{7}};
  report(140, 100, left);
  EXPECT_TRUE(session->isRunning());
  EXPECT_EQ(lastError(), "none");
  service->starts = {tl::unexpected(broken())};
  report(1200, 100, right);
  EXPECT_EQ(clock.waiting(), 1u);
}

TEST_F(CaptureManagerTest, EveryStageOfAStartCanFail) {
  service->starts = {tl::unexpected(broken())};
  report(100, 100, left);
  EXPECT_THAT(journal(), ElementsAre("query", "make 7", "start"));
  EXPECT_EQ(service->lastStream().stream, nullptr);
  service->added = tl::unexpected(broken());
  clock.advance(400ms);
  EXPECT_THAT(journal(), ElementsAre("query", "make 7"));
  service->contents = {tl::unexpected(broken())};
  clock.advance(400ms);
  EXPECT_THAT(journal(), ElementsAre("query"));
  service->contents = {
      tl::unexpected(Error{std::string(screencapture::errorDomain), screencapture::userDeclined, "Refused"})};
  clock.advance(400ms);
  EXPECT_EQ(lastError(), permissionDeclined);
}

TEST_F(CaptureManagerTest, AMissingPermissionIsAskedForAndNotRetried) {
  service->access = false;
  service->contents = {tl::unexpected(broken())};
  report(100, 100, left);
  EXPECT_THAT(journal(), ElementsAre("query", "request access"));
  EXPECT_EQ(lastError(), permissionRequired);
  clock.advance(10s);
  EXPECT_THAT(journal(), IsEmpty());
  EXPECT_THAT(log.lines(), ElementsAre("capture error: capture failed: It broke"));
}

TEST_F(CaptureManagerTest, StopSuspendsAndResumeRestartsTheLastRegion) {
  startOnLeft();
  session->stop();
  test::settle();
  EXPECT_THAT(journal(), ElementsAre("stop"));
  EXPECT_FALSE(session->isRunning());
  report(1200, 100, right);
  session->start(left);
  test::settle();
  EXPECT_THAT(journal(), IsEmpty());
  session->resume();
  test::settle();
  EXPECT_THAT(journal(), ElementsAre("query", "make 8", "start"));
  session->resume();
  test::settle();
  EXPECT_THAT(journal(), IsEmpty());
}

TEST_F(CaptureManagerTest, ARetryWhileSuspendedDoesNothing) {
  service->starts = {tl::unexpected(broken())};
  report(100, 100, left);
  journal();
  session->stop();
  clock.advance(1s);
  EXPECT_THAT(journal(), IsEmpty());
  session->resume();
  test::settle();
  EXPECT_TRUE(session->isRunning());
}

TEST_F(CaptureManagerTest, AStopStillQueuedWhenResumedEndsTheOldStreamBeforeTheNewStart) {
  startOnLeft();
  session->stop();
  session->resume();
  // The display counts as current again at once: a move meanwhile only waits to be flushed.
  session->updateRegion({200, 100, 300, 200}, left);
  EXPECT_EQ(clock.waiting(), 1u);
  test::settle();
  EXPECT_THAT(journal(), ElementsAre("stop", "query", "make 7", "start"));
  EXPECT_TRUE(session->isRunning());
  expectMovesConfigure();
}

TEST_F(CaptureManagerTest, AStartThatFailsLeavesALaterOneItsDisplay) {
  service->startGate.close();
  service->starts = {tl::unexpected(broken())};
  report(1200, 100, right);
  report(100, 100, left);
  service->startGate.open();
  test::settle();
  EXPECT_TRUE(session->isRunning());
  expectMovesConfigure();
}

TEST_F(CaptureManagerTest, AStreamThatStopsIsStartedAgainWhileRetriesLast) {
  startOnLeft();
  service->starts = {tl::unexpected(broken()), tl::unexpected(broken()), tl::unexpected(broken())};
  service->lastStream().stopWithError({"test", 1, "Monitor gone"});
  test::settle();
  EXPECT_TRUE(log.contains("capture error: stream stopped: Monitor gone"));
  EXPECT_THAT(journal(), ElementsAre("query", "make 7", "start"));
  EXPECT_FALSE(session->isRunning());
  clock.advance(800ms);
  EXPECT_EQ(lastError(), "Capture failed: It broke");
}

TEST_F(CaptureManagerTest, AStreamThatStopsWithoutRetriesLeftIsReported) {
  service->starts = {tl::unexpected(broken()), tl::unexpected(broken()), tl::unexpected(broken())};
  report(100, 100, left);
  clock.advance(800ms);
  service->startGate.close();
  clock.advance(400ms);  // the fourth start is under way, the retries are used up
  std::thread([this] { service->lastStream().stopWithError({"test", 1, "Monitor gone"}); }).join();
  test::settle();
  EXPECT_EQ(lastError(), "Stream stopped: Monitor gone");
  EXPECT_FALSE(session->isRunning());
}

TEST_F(CaptureManagerTest, AStreamThatStopsWhileSuspendedIsLeftAlone) {
  startOnLeft();
  service->stopGate.close();
  session->stop();
  test::settle();
  service->lastStream().stopWithError({"test", 1, "Monitor gone"});
  test::settle();
  EXPECT_THAT(journal(), ElementsAre("stop"));
  EXPECT_EQ(lastError(), "none");
}

TEST_F(CaptureManagerTest, CanBeDestroyedWhileAnythingIsUnderWay) {
  for (test::Gate* gate :
       {&service->queryGate, &service->startGate, &service->stopGate, &service->updateGate}) {
    session = std::make_unique<CaptureManager>(service, clock);
    gate->close();
    service->contents = {contentWithoutUs(), contentWithoutUs()};
    report(100, 100, left);
    clock.advance(200ms);
    report(150, 100, left);
    clock.advance(60ms);
    report(1200, 100, right);
    session->stop();
    test::settle();
    const auto before = log.lines();
    journal();
    session.reset();
    gate->open();
    clock.advance(10s);
    EXPECT_THAT(journal(), IsEmpty());
    EXPECT_EQ(log.lines(), before);
    for (const auto& record : service->streams)
      EXPECT_EQ(record->stream, nullptr);
  }
}

TEST_F(CaptureManagerTest, FramesAndStopsMayArriveWhileTheSessionIsDestroyed) {
  const auto sender = service->makeStream({}, {}, {});
  for (int round = 0; round < 20; ++round) {
    auto frames = std::make_shared<int>(0);
    session = std::make_unique<CaptureManager>(service, clock);
    session->setOnFrame([frames](const PixelBufferRef&) { ++*frames; });
    startOnLeft();
    const std::shared_ptr<test::StreamRecord> record = service->streams.back();
    const auto output = record->output.lock();
    std::atomic<bool> running{true};
    std::thread source([&] {
      const screencapture::SampleBuffer sample{
          true, {{FrameStatus::complete}}, std::make_shared<PixelBuffer>(1, 1)};
      while (running)
        output->didOutputSampleBuffer(*sender, sample, screencapture::OutputType::screen);
    });
    std::thread stopper([&] { record->stopWithError({"test", 1, "Monitor gone"}); });
    stopper.join();
    session.reset();
    const int seen = *frames;  // no frame is under way any more
    running = false;
    source.join();
    EXPECT_EQ(*frames, seen);
    test::settle();
  }
}

}  // namespace
}  // namespace velicor
