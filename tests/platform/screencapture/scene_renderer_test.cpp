// What the renderer keeps between frames, on a real server: never other than a drawing from scratch, and not
// touched by what is drawn elsewhere.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "platform/screencapture/x11/redirection.h"
#include "platform/screencapture/x11/scene_renderer.h"
#include "platform/screencapture/x11/server_memory.h"
#include "platform/screencapture/x11/stack_watcher.h"
#include "support/main_loop.h"
#include "support/x_client.h"
#include "support/x_server.h"
#include "support/xfce_manager.h"

namespace velicor::screencapture {
namespace {

using velicor::test::XClient;

constexpr DeviceRect frame{100, 100, 200, 150};
constexpr std::size_t frameBytes = static_cast<std::size_t>(frame.width) * frame.height * 4;

class SceneRendererTest : public testing::Test {
 protected:
  SceneRendererTest() { EXPECT_FALSE(redirectWindows(*connection_)); }

  ScenePlan plan() {
    takeEvents();
    while (watcher_.isOutdated())
      watcher_.refresh();
    return planScene(watcher_.stack(), {frame, {0, 0, 1280, 800}, {}, watcher_.isComposited(), {}});
  }

  void takeEvents() {
    while (const auto event = connection_->nextEvent())
      watcher_.take(*event);
  }

  // All that has been asked for so far has been done, and its events are here.
  void takeEvents(SceneRenderer& renderer) {
    other_.sync();
    connection_->intern("VELICOR_ROUND_TRIP");
    while (const auto event = connection_->nextEvent())
      renderer.take(*event);
  }

  // Requests that this sends. The server has done them afterwards.
  template <typename Call>
  unsigned requestsOf(Call call) {
    const unsigned before = xcb_no_operation(connection_->raw()).sequence;
    call();
    const unsigned sent = xcb_no_operation(connection_->raw()).sequence - before - 1;
    connection_->intern("VELICOR_ROUND_TRIP");
    return sent;
  }

  // What the pool hands out, brought up to date.
  SceneRenderer::Drawing draw(SceneRenderer& renderer, SegmentPool& pool, std::vector<std::byte>& picture) {
    const auto segment = pool.acquire(frameBytes);
    const auto drawing = renderer.draw(*segment);
    pool.written(segment, drawing.changed);
    picture.assign(segment->bytes(), segment->bytes() + frameBytes);
    pool.publish(segment, frame.width, frame.height);
    return drawing;
  }

  std::vector<std::byte> fromScratch() {
    SceneRenderer fresh(*connection_, formats_);
    fresh.follow(plan());
    SegmentPool pool(memory_, 1, [] {});
    std::vector<std::byte> picture;
    EXPECT_TRUE(draw(fresh, pool, picture).done);
    return picture;
  }

  test::XServer server_;
  x11::OwnClients own_;
  std::unique_ptr<x11::Connection> connection_ = std::move(*x11::Connection::open(server_.name(), own_));
  VisualFormats formats_ = std::move(*VisualFormats::read(*connection_));
  StackWatcher watcher_{*connection_, formats_};
  ServerMemory memory_{*connection_};
  XClient other_{server_.name()};
};

TEST_F(SceneRendererTest, KeepsWhatADrawingFromScratchShows) {
  other_.takeSelection("_NET_WM_CM_S0");
  std::vector<xcb_window_t> windows{other_.showPattern({80, 90, 120, 200}, {1}),
                                    other_.showPattern({150, 120, 100, 80}, {2}, {.border = 3})};
  windows.push_back(other_.makeWindow({90, 160, 180, 60}, {.alpha = true}));
  other_.setColour(windows.back(), 0x80402010);
  other_.setNumber(windows.back(), "_NET_WM_WINDOW_OPACITY", 0xc0000000);
  other_.map(windows.back());
  windows.push_back(other_.showPattern({220, 60, 150, 150}, {3}));
  other_.shape(windows.back(), {10, 60, 40, 70});
  other_.sync();

  SceneRenderer renderer(*connection_, formats_);
  renderer.follow(plan());
  SegmentPool pool(memory_, 3, [] {});
  std::vector<std::byte> picture;
  std::mt19937 random(7);
  const auto upTo = [&random](int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); };
  for (int round = 0; round < 200; ++round) {
    for (int i = upTo(4); i > 0; --i) {
      const DeviceRect place{upTo(170), upTo(170), 1 + upTo(60), 1 + upTo(40)};
      other_.fill(windows[static_cast<std::size_t>(upTo(4))], place, static_cast<std::uint32_t>(random()));
    }
    takeEvents(renderer);
    if (!renderer.isCurrent()) draw(renderer, pool, picture);
    ASSERT_EQ(picture, fromScratch()) << round;
  }
}

// Drawn inside after damage elsewhere became known and before the server had taken that off.
TEST_F(SceneRendererTest, LosesNothingThatIsDrawnMeanwhile) {
  const xcb_window_t window = other_.showPattern({90, 90, 300, 300}, {3});
  SceneRenderer renderer(*connection_, formats_);
  renderer.follow(plan());
  SegmentPool pool(memory_, 3, [] {});
  std::vector<std::byte> picture;
  takeEvents(renderer);
  ASSERT_TRUE(draw(renderer, pool, picture).done);
  other_.fill(window, {0, 0, 5, 5}, 1);
  takeEvents(renderer);
  EXPECT_TRUE(renderer.isCurrent());
  other_.fill(window, {50, 50, 30, 30}, 1);  // the renderer's requests have not left yet
  takeEvents(renderer);
  EXPECT_TRUE(renderer.drawnInside());
  draw(renderer, pool, picture);
  EXPECT_EQ(picture, fromScratch());
}

// Gone after the plan was made and before its contents were named, with and without another window on top.
TEST_F(SceneRendererTest, KeepsNothingWhereAWindowVanishedThatHidTheRest) {
  const auto pixelOf = [](const std::vector<std::byte>& picture) {
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, picture.data(), sizeof pixel);
    return pixel & 0xffffff;
  };
  for (const bool topped : {false, true}) {
    if (topped) other_.showColour({250, 200, 300, 300}, 0x00ff00);
    SceneRenderer renderer(*connection_, formats_);
    SegmentPool pool(memory_, 1, [] {});
    std::vector<std::byte> picture;
    const xcb_window_t before = other_.showColour({50, 50, 400, 300}, 0xff0000);
    other_.lower(before);
    renderer.follow(plan());
    EXPECT_FALSE(draw(renderer, pool, picture).isLacking);
    EXPECT_EQ(pixelOf(picture), 0xff0000u);
    const xcb_window_t window = other_.showColour({50, 50, 400, 300}, 0xffff00);
    other_.lower(window);
    other_.destroy(before);
    renderer.follow(plan());
    other_.destroy(window);
    other_.sync();
    const auto drawing = draw(renderer, pool, picture);
    EXPECT_TRUE(drawing.done && drawing.isLacking);
    EXPECT_EQ(pixelOf(picture), 0u) << "what the segment or the canvas had before";
    renderer.follow(plan());
    EXPECT_FALSE(draw(renderer, pool, picture).isLacking);
    EXPECT_EQ(picture, fromScratch());
  }
}

TEST_F(SceneRendererTest, AsksForNothingWhereNothingInsideWasDrawn) {
  const xcb_window_t beside = other_.showPattern({50, 50, 400, 300}, {1});
  const xcb_window_t beneath = other_.showPattern({90, 90, 300, 300}, {2});
  const xcb_window_t top = other_.showPattern({90, 90, 300, 300}, {3});
  SceneRenderer renderer(*connection_, formats_);
  renderer.follow(plan());
  SegmentPool pool(memory_, 3, [] {});
  std::vector<std::byte> picture;
  takeEvents(renderer);
  for (int i = 0; i < 3; ++i)
    ASSERT_TRUE(draw(renderer, pool, picture).done);

  EXPECT_EQ(requestsOf([&] { EXPECT_FALSE(renderer.drawnInside()); }), 0u);
  other_.fill(beside, {0, 0, 30, 30}, 1);
  other_.fill(beneath, {20, 20, 30, 30}, 1);
  takeEvents(renderer);
  EXPECT_EQ(requestsOf([&] { EXPECT_FALSE(renderer.drawnInside()); }), 0u) << "windows that do not show";
  other_.fill(top, {250, 200, 30, 30}, 1);
  takeEvents(renderer);
  EXPECT_EQ(requestsOf([&] { EXPECT_FALSE(renderer.drawnInside()); }), 1u) << "outside: it is taken off";
  EXPECT_TRUE(renderer.isCurrent());
  other_.fill(top, {250, 200, 30, 30}, 1);
  other_.fill(top, {0, 0, 5, 5}, 1);
  takeEvents(renderer);
  EXPECT_LE(requestsOf([&] { EXPECT_FALSE(renderer.drawnInside()); }), 5u) << "around: one question";
  EXPECT_TRUE(renderer.isCurrent());
  other_.fill(top, {100, 50, 3, 3}, 1);
  takeEvents(renderer);
  EXPECT_FALSE(renderer.isCurrent());
  // The picture itself, without composing it.
  EXPECT_EQ(requestsOf([&] { EXPECT_EQ(draw(renderer, pool, picture).changed, (Rows{40, 43})); }), 1u);
  EXPECT_EQ(picture, fromScratch());
}

// Whether its shape, its alpha or its manager's frame makes the window on top more than a plain rectangle.
TEST_F(SceneRendererTest, DoesNotHearOfWhatIsCovered) {
  const DeviceRect large{50, 50, 400, 350};
  const auto expectNothingBeneath = [&](const char* cover, xcb_window_t beneath, xcb_window_t top) {
    SCOPED_TRACE(cover);
    ASSERT_TRUE(velicor::test::waitUntil([&] { return plan().covered; }));
    SceneRenderer renderer(*connection_, formats_);
    renderer.follow(plan());
    EXPECT_EQ(renderer.plan().layers.size(), 1u);
    SegmentPool pool(memory_, 3, [] {});
    std::vector<std::byte> picture;
    ASSERT_TRUE(draw(renderer, pool, picture).done);
    const auto before = picture;
    // A window manager may still be drawing its frames.
    ASSERT_TRUE(velicor::test::waitUntil([&] {
      takeEvents(renderer);
      return requestsOf([&] { renderer.drawnInside(); }) == 0;
    }));
    other_.fill(beneath, {0, 0, 400, 350}, 0xffffff);
    takeEvents(renderer);
    EXPECT_EQ(requestsOf([&] { EXPECT_FALSE(renderer.drawnInside()); }), 0u);
    other_.fill(top, {120, 120, 10, 10}, 0xff123456);
    takeEvents(renderer);
    EXPECT_TRUE(renderer.drawnInside());
    draw(renderer, pool, picture);
    EXPECT_NE(picture, before);
  };
  const xcb_window_t beneath = other_.showPattern(large, {1});
  xcb_window_t top = other_.showPattern(large, {2});
  other_.shape(top, {10, 0, 380, 350});
  expectNothingBeneath("shaped", beneath, top);

  other_.takeSelection("_NET_WM_CM_S0");
  other_.destroy(top);
  top = other_.makeWindow(large, {.alpha = true});
  other_.setColour(top, 0xff804020);
  other_.setNumbers(top, "_NET_WM_OPAQUE_REGION", {0, 0, 400, 4, 0, 4, 400, 346});
  other_.map(top);
  expectNothingBeneath("opaque", beneath, top);
  other_.setNumbers(top, "_NET_WM_OPAQUE_REGION", {0, 0, 100, 350});
  EXPECT_TRUE(velicor::test::waitUntil([&] { return plan().layers.size() == 2; })) << "half of it";
  other_.releaseSelection("_NET_WM_CM_S0");
  other_.destroy(top);
  other_.destroy(beneath);

  const velicor::test::XfceManager manager(server_, velicor::test::XfceManager::Way::composing);
  const xcb_window_t framedBeneath = other_.showPattern(large, {1}, {.managed = true});
  const xcb_window_t framedTop = other_.showPattern(large, {2}, {.managed = true});
  other_.move(framedBeneath, 50, 50);
  other_.move(framedTop, 50, 50);
  expectNothingBeneath("framed by xfwm4", framedBeneath, framedTop);
}

}  // namespace
}  // namespace velicor::screencapture
