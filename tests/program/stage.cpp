#include "program/stage.h"

#include <cstdlib>
#include <cstring>

#include <xcb/xcb.h>

#include "support/main_loop.h"

namespace velicor::test {

namespace {

constexpr int width = 1280;
constexpr int height = 800;

bool isNear(QColor a, QColor b, int tolerance) {
  return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
         std::abs(a.blue() - b.blue()) <= tolerance;
}

// What is on the screen, whatever compositing manager put it there.
QImage grab(xcb_connection_t* connection, xcb_window_t root, DeviceRect area) {
  QImage image(area.width, area.height, QImage::Format_RGB32);
  const auto cookie =
      xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, root, static_cast<std::int16_t>(area.x),
                    static_cast<std::int16_t>(area.y), static_cast<std::uint16_t>(area.width),
                    static_cast<std::uint16_t>(area.height), ~0U);
  xcb_get_image_reply_t* reply = xcb_get_image_reply(connection, cookie, nullptr);
  if (reply)
    std::memcpy(image.bits(), xcb_get_image_data(reply), static_cast<std::size_t>(image.sizeInBytes()));
  std::free(reply);
  return image;
}

template <typename T>
struct Reply : std::unique_ptr<T, decltype(&std::free)> {
  explicit Reply(T* reply) : std::unique_ptr<T, decltype(&std::free)>(reply, &std::free) {}
};

// Of a child of the root window.
DeviceRect frameOf(xcb_connection_t* connection, xcb_window_t window) {
  const Reply<xcb_get_geometry_reply_t> reply(
      xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
  return reply ? DeviceRect{reply->x, reply->y, reply->width, reply->height} : DeviceRect{};
}

// Input shapes count.
DeviceRect frameAt(xcb_connection_t* connection, xcb_window_t root, DevicePoint place) {
  const auto asked = xcb_translate_coordinates(connection, root, root, static_cast<std::int16_t>(place.x),
                                               static_cast<std::int16_t>(place.y));
  const Reply<xcb_translate_coordinates_reply_t> hit(
      xcb_translate_coordinates_reply(connection, asked, nullptr));
  if (!hit || hit->child == XCB_WINDOW_NONE) return {};
  return frameOf(connection, hit->child);
}

xcb_window_t focusedWindow(xcb_connection_t* connection) {
  const Reply<xcb_get_input_focus_reply_t> reply(
      xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
  return reply ? reply->focus : xcb_window_t{XCB_WINDOW_NONE};
}

std::string titleOf(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property) {
  const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
      connection, xcb_get_property(connection, 0, window, property, XCB_ATOM_ANY, 0, 64), nullptr));
  if (!reply) return {};
  return {static_cast<const char*>(xcb_get_property_value(reply.get())),
          static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

}  // namespace

std::string nameOf(Surroundings surroundings) {
  switch (surroundings) {
    case Surroundings::noManager:
      return "noManager";
    case Surroundings::windowManager:
      return "windowManager";
    case Surroundings::windowManagerAndCompositor:
      return "windowManagerAndCompositor";
  }
  return {};
}

Stage::Stage(Surroundings surroundings) : painter_(server_.name()), mouse_(server_.name()) {
  if (surroundings != Surroundings::noManager) manager_ = std::make_unique<WindowManager>(server_);
  if (surroundings == Surroundings::windowManagerAndCompositor) {
    compositor_ = std::make_unique<CompositingManager>(server_);
  }
  mouse_.moveTo({5, 5});
}

bool Stage::takesMouse(const DeviceRect& loupe, DevicePoint place) const {
  return waitUntil([&] { return windowAt(place) == loupe; });
}

DeviceRect Stage::windowAt(DevicePoint place) const {
  return frameAt(painter_.raw(), painter_.root(), place);
}

testing::AssertionResult Stage::hasKeyboard(const std::string& title) const {
  std::string found;
  const bool has = waitUntil([&] {
    found = titleOf(painter_.raw(), focusedWindow(painter_.raw()), painter_.atom("_NET_WM_NAME"));
    return found == title;
  });
  return has ? testing::AssertionSuccess()
             : testing::AssertionFailure() << "the keyboard goes to '" << found << "'";
}

testing::AssertionResult Stage::hasKeyboard(const DeviceRect& frame) const {
  if (waitUntil([&] { return frameOf(painter_.raw(), focusedWindow(painter_.raw())) == frame; }))
    return testing::AssertionSuccess();
  return testing::AssertionFailure() << "the keyboard goes to '"
                                     << titleOf(painter_.raw(), focusedWindow(painter_.raw()),
                                                painter_.atom("_NET_WM_NAME"))
                                     << "'";
}

QImage Stage::screenshot() const { return grab(painter_.raw(), painter_.root(), {0, 0, width, height}); }

QColor Stage::colorAt(DevicePoint place) const {
  return grab(painter_.raw(), painter_.root(), {place.x, place.y, 1, 1}).pixelColor(0, 0);
}

testing::AssertionResult Stage::shows(DevicePoint place, QColor color, int tolerance,
                                      std::chrono::milliseconds limit) const {
  if (waitUntil([&] { return isNear(colorAt(place), color, tolerance); }, limit)) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "(" << place.x << ", " << place.y << ") shows "
                                     << colorAt(place).name().toStdString() << ", not "
                                     << color.name().toStdString();
}

}  // namespace velicor::test
