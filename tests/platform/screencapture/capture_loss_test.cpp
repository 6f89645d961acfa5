#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <random>
#include <thread>

#include <unistd.h>
#include <xcb/composite.h>
#include <xcb/shm.h>

#include "capture_harness.h"
#include "platform/screencapture/x11/capture_stream.h"
#include "platform/screencapture/x11/server_memory.h"

// What the server takes away, and other ways round.
namespace velicor::screencapture::test {
namespace {

// The capture thread is waiting for a picture, or about to ask for it, when the server ends.
TEST(CaptureLoss, ServerThatEndsInTheMiddleOfAFrame) {
  for (int round = 0; round < 8; ++round) {
    Bench bench;
    bench.other.showPattern({100, 100, 300, 300}, {2});
    const auto stream = bench.start({150, 150, 200, 200}, 1000);
    bench.receiver->waitForQuiet(std::chrono::milliseconds(20));
    bench.server.program().freeze();
    // Not waited for before the end: the thread may already be waiting for the frozen server.
    auto moved = stream->updateConfiguration(Bench::configuration({140, 140, 220, 210}, 1000));
    std::this_thread::sleep_for(std::chrono::microseconds(400 * round));
    bench.server.program().kill();
    const auto stop = bench.receiver->waitForStop();
    ASSERT_TRUE(stop);
    EXPECT_EQ(stop->code, connectionLost);
    Bench::await(std::move(moved));
    EXPECT_EQ(Bench::await(bench.service->shareableContent({})).error().code, connectionLost);
  }
}

// The windows' own pixmaps are gone and every naming is refused, until they are redirected anew.
TEST(CaptureLoss, RedirectionComesBack) {
  const XServer server;
  x11::OwnClients own;
  XClient other(server.name());
  XClient ours(server.name());
  ours.joinOwn(own);
  other.defineMonitor("only", {0, 0, 1280, 800}, true);
  auto connection = x11::Connection::open(server.name(), own);
  ASSERT_TRUE(connection);
  x11::Connection& raw = **connection;
  CaptureEngine engine(std::move(*connection), own, {});
  const DeviceRect place{100, 100, 300, 300};
  const xcb_window_t window = other.showPattern(place, {2});
  ours.showColour({120, 120, 200, 200}, magenta);

  dispatch::SerialQueue queue("velicor.capture");
  const auto receiver = std::make_shared<Receiver>();
  const auto stream = CaptureStream::make(engine, {{other.atom("only")}, {{getpid(), {}}}},
                                          Bench::configuration({150, 150, 200, 200}, 60), receiver);
  ASSERT_TRUE(stream->addStreamOutput(receiver, OutputType::screen, queue));
  ASSERT_TRUE(Bench::await(stream->startCapture()));
  const auto isExact = [&](const Frame& frame) {
    return frame.wrongPixels(patternAt({place.x, place.y, 300, 320}, {2}, plain(0)), {150, 150}) == 0;
  };
  EXPECT_TRUE(receiver->waitForFrame(0, isExact));

  const std::size_t before = receiver->waitForQuiet();
  xcb_composite_unredirect_subwindows(raw.raw(), raw.root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
  raw.flush();
  other.resize(window, 300, 310);
  receiver->framesFrom(before, 1);
  other.resize(window, 300, 320);
  // What the window had lost it draws anew; its backdrop does.
  EXPECT_TRUE(receiver->waitForFrame(before, isExact));
  receiver->waitForQuiet();
  EXPECT_TRUE(isExact(receiver->frames().back()));
  EXPECT_TRUE(Bench::await(stream->stopCapture()));
}

TEST(ServerMemory, ReceivesPicturesBothWays) {
  const XServer server;
  XClient other(server.name());
  other.showPattern({0, 0, 200, 100}, {2});
  x11::OwnClients own;
  const auto connection = x11::Connection::open(server.name(), own);
  ASSERT_TRUE(connection);
  xcb_connection_t* const raw = (*connection)->raw();
  for (const auto way : {ServerMemory::Way::file, ServerMemory::Way::systemV}) {
    ServerMemory memory(**connection, way);
    const auto segment = memory.make(200 * 100 * 4);
    ASSERT_TRUE(segment);
    ASSERT_EQ(memory.way(), way);
    ASSERT_TRUE((*connection)
                    ->reply(xcb_shm_get_image_reply,
                            xcb_shm_get_image(raw, (*connection)->root(), 0, 0, 200, 100, ~0U,
                                              XCB_IMAGE_FORMAT_Z_PIXMAP, segment->serverId(), 0)));
    Frame frame{200, 100, std::vector<std::uint32_t>(200 * 100)};
    std::memcpy(frame.pixels.data(), segment->bytes(), 200 * 100 * 4);
    for (std::uint32_t& pixel : frame.pixels)
      pixel &= 0xffffff;
    EXPECT_EQ(frame.wrongPixels(patternAt({0, 0, 200, 100}, {2}, plain(0)), {0, 0}), 0);
    memory.retire(*segment);
  }
}

// Its last letter may come together with the end.
TEST(CaptureEngine, EndsWhateverMailIsOnItsWay) {
  const XServer server;
  x11::OwnClients own;
  std::mt19937 random(7);
  for (int round = 0; round < 200; ++round) {
    auto connection = x11::Connection::open(server.name(), own);
    ASSERT_TRUE(connection);
    std::atomic<bool> ending = false;
    Mailbox::Job again;
    const CaptureEngine engine(std::move(*connection), own, {});
    again = [&ending, &again, mailbox = engine.mailbox()] {
      if (!ending) mailbox->post(again);
    };
    engine.mailbox()->post(again);
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 500));
    ending = true;
  }
}

}  // namespace
}  // namespace velicor::screencapture::test
