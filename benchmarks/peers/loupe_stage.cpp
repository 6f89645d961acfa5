#include "peers/loupe_stage.h"

#include <chrono>
#include <cstdlib>
#include <functional>
#include <optional>
#include <stdexcept>

#include "support/main_loop.h"
#include "support/pictures.h"

namespace velicor::benchmarks {

namespace {

constexpr DeviceRect ground{20, 20, 720, 480};

std::string screenText() { return std::to_string(stageWidth) + "x" + std::to_string(stageHeight) + "x24"; }

std::vector<xcb_window_t> childrenOf(xcb_connection_t* connection, xcb_window_t window) {
  xcb_query_tree_reply_t* tree =
      xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr);
  if (!tree) return {};
  const xcb_window_t* first = xcb_query_tree_children(tree);
  std::vector<xcb_window_t> children(first, first + xcb_query_tree_children_length(tree));
  std::free(tree);
  return children;
}

std::optional<DeviceRect> frameOf(xcb_connection_t* connection, xcb_window_t window) {
  xcb_get_geometry_reply_t* reply =
      xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr);
  if (!reply) return std::nullopt;
  const DeviceRect frame{reply->x, reply->y, reply->width, reply->height};
  std::free(reply);
  return frame;
}

// The top-level window that takes the mouse at this place; input shapes count.
xcb_window_t takerAt(test::XClient& client, DevicePoint place) {
  const auto asked =
      xcb_translate_coordinates(client.raw(), client.root(), client.root(),
                                static_cast<std::int16_t>(place.x), static_cast<std::int16_t>(place.y));
  xcb_translate_coordinates_reply_t* reply = xcb_translate_coordinates_reply(client.raw(), asked, nullptr);
  const xcb_window_t taker = reply ? reply->child : xcb_window_t{XCB_WINDOW_NONE};
  std::free(reply);
  return taker;
}

xcb_pixmap_t pixmapOf(test::XClient& client, const PixelBuffer& picture) {
  const xcb_pixmap_t pixmap = xcb_generate_id(client.raw());
  const xcb_gcontext_t gc = xcb_generate_id(client.raw());
  const auto width = static_cast<std::uint16_t>(picture.width());
  xcb_create_pixmap(client.raw(), 24, pixmap, client.root(), width,
                    static_cast<std::uint16_t>(picture.height()));
  xcb_create_gc(client.raw(), gc, pixmap, 0, nullptr);
  for (int y = 0; y < picture.height(); ++y) {
    const auto row = picture.row(y);
    xcb_put_image(client.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, gc, width, 1, 0,
                  static_cast<std::int16_t>(y), 0, 24, static_cast<std::uint32_t>(row.size()),
                  reinterpret_cast<const std::uint8_t*>(row.data()));
  }
  xcb_free_gc(client.raw(), gc);
  client.sync();
  return pixmap;
}

void require(bool holds, const std::string& what) {
  if (!holds) throw std::runtime_error(what);
}

}  // namespace

LoupeStage::LoupeStage()
    : server_(screenText()), manager_(server_), client_(server_.name()), mouse_(server_.name()) {
  mouse_.moveTo(pointerRest);
}

void LoupeStage::showStillGround() { client_.lower(client_.showPattern(ground, {3})); }

xcb_window_t LoupeStage::windowWithFrame(const DeviceRect& frame) const {
  for (const xcb_window_t window : childrenOf(client_.raw(), client_.root())) {
    if (frameOf(client_.raw(), window) == frame) return window;
  }
  return XCB_WINDOW_NONE;
}

std::vector<xcb_window_t> LoupeStage::windowsOfSameClient(xcb_window_t window) const {
  const std::uint32_t mask = ~xcb_get_setup(client_.raw())->resource_id_mask;
  std::vector<xcb_window_t> found;
  const std::function<void(xcb_window_t)> search = [&](xcb_window_t parent) {
    for (const xcb_window_t child : childrenOf(client_.raw(), parent)) {
      if ((child & mask) == (window & mask)) found.push_back(child);
      search(child);
    }
  };
  search(client_.root());
  return found;
}

LoupeOnStage::LoupeOnStage(LoupeStage& stage) : stage_(stage), velicor_({.display = stage.display()}) {
  require(velicor_.waitForLog("capture running"), "Velicor did not start:\n" + velicor_.log());
  DeviceRect loupe = loupeAtStart;
  // By the chip in the top right corner, then by the bottom right corner.
  loupe = drag(loupe, {loupe.right() - 18, loupe.y + 18}, {region.x - loupe.x, region.y - loupe.y}, false);
  loupe = drag(loupe, {loupe.right() - 5, loupe.bottom() - 5},
               {region.right() - loupe.right(), region.bottom() - loupe.bottom()}, true);
  stage_.mouse().moveTo(pointerRest);
  loupe_ = stage_.windowWithFrame(loupe);
}

DeviceRect LoupeOnStage::drag(DeviceRect loupe, DevicePoint handle, DevicePoint distance, bool corner) {
  const xcb_window_t window = stage_.windowWithFrame(loupe);
  require(window != XCB_WINDOW_NONE, "the loupe is not where it should be");
  // The loupe hears of the mouse by its motion, and may not listen yet.
  const auto takesMouse = [&] {
    stage_.mouse().moveTo({handle.x - 1, handle.y});
    stage_.mouse().moveTo(handle);
    return takerAt(stage_.client(), handle) == window;
  };
  require(test::waitUntil(takesMouse), "the loupe takes no mouse");
  stage_.mouse().drag(handle, {handle.x + distance.x, handle.y + distance.y});
  if (corner) {
    loupe.width += distance.x;
    loupe.height += distance.y;
  } else {
    loupe = loupe.translatedBy(distance.x, distance.y);
  }
  require(test::waitUntil([&] { return stage_.windowWithFrame(loupe) == window; }),
          "the loupe did not follow");
  return loupe;
}

MovingPicture::MovingPicture(const std::string& display) : client_(display) {
  for (const Picture picture : allPictures)
    pictures_.push_back(pixmapOf(client_, *makePicture(picture, ground.width, ground.height)));
  window_ = client_.showColour(ground, 0);
  client_.lower(window_);
  thread_ = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

void MovingPicture::run(const std::stop_token& stop) {
  const xcb_gcontext_t gc = xcb_generate_id(client_.raw());
  xcb_create_gc(client_.raw(), gc, window_, 0, nullptr);
  const auto start = std::chrono::steady_clock::now();
  for (int frame = 0; !stop.stop_requested(); ++frame) {
    std::this_thread::sleep_until(start + std::chrono::microseconds(1000000 / 30) * frame);
    xcb_copy_area(client_.raw(), pictures_[static_cast<std::size_t>(frame) % pictures_.size()], window_, gc,
                  0, 0, 0, 0, ground.width, ground.height);
    xcb_flush(client_.raw());
  }
}

}  // namespace velicor::benchmarks
