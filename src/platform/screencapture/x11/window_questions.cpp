#include "platform/screencapture/x11/window_questions.h"

#include <string>
#include <utility>

#include <xcb/shape.h>

#include "platform/screencapture/x11/appearance.h"
#include "platform/x11/properties.h"

namespace velicor::screencapture {

namespace {

using x11::Atom;
using x11::Connection;

// A frame with more windows in it than this is none: looking through them would take long.
constexpr std::size_t mostSiblings = 64;

void selectWithShape(Connection& connection, WindowId window, std::uint32_t mask) {
  xcb_change_window_attributes(connection.raw(), window, XCB_CW_EVENT_MASK, &mask);
  if (connection.extensions().shape.present) xcb_shape_select_input(connection.raw(), window, 1);
}

xcb_shape_query_extents_cookie_t askShaped(Connection& connection, WindowId window) {
  if (!connection.extensions().shape.present) return {};
  return xcb_shape_query_extents(connection.raw(), window);
}

bool isShaped(Connection& connection, xcb_shape_query_extents_cookie_t cookie) {
  if (!connection.extensions().shape.present) return false;
  const auto reply = connection.reply(xcb_shape_query_extents_reply, cookie);
  return reply && (*reply)->bounding_shaped != 0;
}

xcb_shape_get_rectangles_cookie_t askShape(Connection& connection, WindowId window) {
  if (!connection.extensions().shape.present) return {};
  return xcb_shape_get_rectangles(connection.raw(), window, XCB_SHAPE_SK_BOUNDING);
}

std::vector<DeviceRect> shapeOf(Connection& connection, xcb_shape_get_rectangles_cookie_t cookie) {
  if (!connection.extensions().shape.present) return {};
  const auto reply = connection.reply(xcb_shape_get_rectangles_reply, cookie);
  if (!reply) return {};
  std::vector<DeviceRect> rects;
  const xcb_rectangle_t* first = xcb_shape_get_rectangles_rectangles(reply->get());
  for (int i = 0; i < xcb_shape_get_rectangles_rectangles_length(reply->get()); ++i)
    rects.push_back({first[i].x, first[i].y, first[i].width, first[i].height});
  return rects;
}

struct WindowQuestion {
  WindowId id;
  xcb_get_window_attributes_cookie_t attributes;
  xcb_get_geometry_cookie_t geometry;
  xcb_shape_query_extents_cookie_t shape;
};

WindowQuestion ask(Connection& connection, WindowId id) {
  selectWithShape(connection, id, XCB_EVENT_MASK_PROPERTY_CHANGE);
  return {id, xcb_get_window_attributes(connection.raw(), id), xcb_get_geometry(connection.raw(), id),
          askShaped(connection, id)};
}

std::optional<StackedWindow> answer(Connection& connection, const VisualFormats& formats,
                                    WindowQuestion asked) {
  const auto attributes = connection.reply(xcb_get_window_attributes_reply, asked.attributes);
  const auto geometry = connection.reply(xcb_get_geometry_reply, asked.geometry);
  const bool shaped = isShaped(connection, asked.shape);
  if (!attributes || !geometry) return std::nullopt;
  StackedWindow window;
  window.id = asked.id;
  window.border = (*geometry)->border_width;
  window.bounds = {(*geometry)->x, (*geometry)->y, (*geometry)->width + 2 * window.border,
                   (*geometry)->height + 2 * window.border};
  window.visual = (*attributes)->visual;
  window.viewable = (*attributes)->map_state == XCB_MAP_STATE_VIEWABLE;
  window.unmanaged = (*attributes)->override_redirect != 0;
  const VisualFormat* format = formats.find(window.visual);
  window.drawable = (*attributes)->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
  window.alpha = format && format->alpha;
  window.shaped = shaped;
  return window;
}

// All that decides how one window is shown. What concerns a client is asked where there is one.
struct AppearanceQuestion {
  FramedClient window;
  xcb_get_property_cookie_t state, desktop, opacity, clientOpacity, name, opaqueRegion, extents;
  xcb_shape_get_rectangles_cookie_t inside;
  xcb_translate_coordinates_cookie_t corner;
  xcb_get_geometry_cookie_t size;
  xcb_shape_query_extents_cookie_t shape;
};

AppearanceQuestion askAppearance(Connection& connection, FramedClient window) {
  const WindowId client = window.client != 0 ? window.client : window.frame;
  const auto property = [&](WindowId owner, Atom name) {
    return x11::askProperty(connection, owner, connection.atom(name));
  };
  AppearanceQuestion asked{};
  asked.window = window;
  asked.state = property(client, Atom::netWmState);
  asked.desktop = property(client, Atom::netWmDesktop);
  asked.opacity = property(window.frame, Atom::netWmWindowOpacity);
  asked.clientOpacity = property(client, Atom::netWmWindowOpacity);
  asked.name = x11::askProperty(connection, window.frame, XCB_ATOM_WM_NAME);
  asked.opaqueRegion = property(client, Atom::netWmOpaqueRegion);
  asked.inside = askShape(connection, window.frame);
  if (window.client == 0) return asked;
  asked.extents = property(client, Atom::netFrameExtents);
  asked.corner = xcb_translate_coordinates(connection.raw(), client, window.frame, 0, 0);
  asked.size = xcb_get_geometry(connection.raw(), client);
  asked.shape = askShaped(connection, client);
  return asked;
}

void answerClient(Connection& connection, const AppearanceQuestion& asked, AppearanceProperties& properties) {
  properties.extents = x11::propertyNumbers(connection, asked.extents);
  const auto corner = connection.reply(xcb_translate_coordinates_reply, asked.corner);
  const auto size = connection.reply(xcb_get_geometry_reply, asked.size);
  properties.clientShaped = isShaped(connection, asked.shape);
  if (!corner || !size) {
    // It is in the client's coordinates, and the client has gone.
    properties.opaqueRegion.clear();
    return;
  }
  properties.clientPlace = DeviceRect{(*corner)->dst_x, (*corner)->dst_y, (*size)->width, (*size)->height};
}

Appearance answerAppearance(Connection& connection, const AppearanceQuestion& asked) {
  AppearanceProperties properties;
  properties.states = x11::propertyNumbers(connection, asked.state);
  properties.desktop = x11::propertyNumber(connection, asked.desktop);
  properties.opacity = x11::propertyNumber(connection, asked.opacity);
  properties.clientOpacity = x11::propertyNumber(connection, asked.clientOpacity);
  const std::string name = x11::propertyText(connection, asked.name);
  properties.name = name;
  properties.opaqueRegion = x11::propertyNumbers(connection, asked.opaqueRegion);
  properties.shape = shapeOf(connection, asked.inside);
  if (asked.window.client != 0) answerClient(connection, asked, properties);
  return appearanceFrom(properties,
                        {connection.atom(Atom::netWmStateHidden), connection.atom(Atom::netWmStateShaded)});
}

}  // namespace

std::vector<WindowId> childrenOf(Connection& connection, xcb_query_tree_cookie_t cookie) {
  const auto reply = connection.reply(xcb_query_tree_reply, cookie);
  if (!reply) return {};
  const xcb_window_t* children = xcb_query_tree_children(reply->get());
  return {children, children + xcb_query_tree_children_length(reply->get())};
}

std::vector<StackedWindow> askWindows(Connection& connection, const VisualFormats& formats,
                                      const std::vector<WindowId>& ids) {
  std::vector<WindowQuestion> asked;
  asked.reserve(ids.size());
  for (const WindowId id : ids)
    asked.push_back(ask(connection, id));
  std::vector<StackedWindow> windows;
  for (const WindowQuestion& question : asked) {
    if (const auto window = answer(connection, formats, question)) windows.push_back(*window);
  }
  return windows;
}

// Programs' windows carry WM_STATE. Frames that a manager makes later tell their client by its reparenting;
// this finds those that were there before us.
std::vector<FramedClient> askClients(Connection& connection, const std::vector<WindowId>& frames) {
  struct Candidate {
    WindowId frame;
    WindowId window;
  };
  std::vector<FramedClient> found;
  std::vector<Candidate> level;
  for (const WindowId frame : frames)
    level.push_back({frame, frame});
  for (int depth = 0; depth <= deepestClient && !level.empty(); ++depth) {
    std::vector<std::pair<xcb_get_property_cookie_t, xcb_query_tree_cookie_t>> cookies;
    cookies.reserve(level.size());
    for (const Candidate& candidate : level) {
      cookies.emplace_back(x11::askProperty(connection, candidate.window, connection.atom(Atom::wmState)),
                           xcb_query_tree(connection.raw(), candidate.window));
    }
    std::vector<Candidate> below;
    for (std::size_t i = 0; i < level.size(); ++i) {
      const bool isClient = x11::propertyNumber(connection, cookies[i].first).has_value();
      const auto children = childrenOf(connection, cookies[i].second);
      if (isClient && depth > 0) found.push_back({level[i].frame, level[i].window});
      if (isClient || depth == deepestClient || children.size() > mostSiblings) continue;
      for (const WindowId child : children)
        below.push_back({level[i].frame, child});
    }
    level = std::move(below);
  }
  return found;
}

std::vector<Appearance> askAppearances(Connection& connection, const std::vector<FramedClient>& windows) {
  std::vector<AppearanceQuestion> asked;
  asked.reserve(windows.size());
  for (const FramedClient& window : windows)
    asked.push_back(askAppearance(connection, window));
  std::vector<Appearance> appearances;
  for (const AppearanceQuestion& question : asked)
    appearances.push_back(answerAppearance(connection, question));
  return appearances;
}

void watchClient(Connection& connection, WindowId client) {
  selectWithShape(connection, client, XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
}

}  // namespace velicor::screencapture
