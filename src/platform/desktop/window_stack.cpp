#include "platform/desktop/window_stack.h"

#include <algorithm>
#include <set>

#include <xcb/shape.h>

#include "platform/desktop/display_server.h"
#include "platform/desktop/toolkit_window.h"
#include "platform/dispatch/main_queue.h"
#include "platform/x11/properties.h"

namespace velicor::desktop {

namespace {

constexpr std::uint8_t depthWithAlpha = 32;

bool isShaped(x11::Connection& connection, xcb_shape_query_extents_cookie_t asked) {
  const auto reply = connection.reply(xcb_shape_query_extents_reply, asked);
  return reply && (*reply)->bounding_shaped != 0;
}

}  // namespace

WindowStack::WindowStack(DisplayServer& server) : server_(server) {
  events_ = server_.event.subscribe([this](const ServerEvent& event) { handle(event); });
  refresh();
}

void WindowStack::handle(const ServerEvent& event) {
  switch (event.type()) {
    case XCB_CREATE_NOTIFY:
    case XCB_DESTROY_NOTIFY:
    case XCB_CIRCULATE_NOTIFY:
      treeDirty_ = true;
      return refreshSoon();
    case XCB_REPARENT_NOTIFY: {
      const auto& reparented = event.as<xcb_reparent_notify_event_t>();
      topLevels_.erase(reparented.window);
      // Managers may be late with their lists of clients: i3 is by one full-screen window.
      frames_.insert(reparented.parent);
      treeDirty_ = clientsDirty_ = true;
      return refreshSoon();
    }
    case XCB_MAP_NOTIFY:
      // Whether a window is see-through is asked again whenever it appears.
      facts_.erase(event.as<xcb_map_notify_event_t>().window);
      treeDirty_ = true;
      return refreshSoon();
    case XCB_UNMAP_NOTIFY: {
      const auto known = facts_.find(event.as<xcb_unmap_notify_event_t>().window);
      if (known != facts_.end()) known->second.viewable = false;
      return refreshSoon();
    }
    case XCB_CONFIGURE_NOTIFY:
      return handleConfigure(event);
    case XCB_PROPERTY_NOTIFY: {
      const auto& property = event.as<xcb_property_notify_event_t>();
      if (property.window != server_.root() || property.atom != server_.atom(x11::Atom::netClientList))
        return;
      clientsDirty_ = true;
      return refreshSoon();
    }
    default:
      return;
  }
}

void WindowStack::handleConfigure(const ServerEvent& told) {
  const auto& event = told.as<xcb_configure_notify_event_t>();
  const auto known = facts_.find(event.window);
  if (known == facts_.end()) return;
  const int border = 2 * event.border_width;
  known->second.rect = {event.x, event.y, event.width + border, event.height + border};
  const auto place = std::ranges::find(order_, event.window);
  const WindowId below = place == order_.begin() || place == order_.end() ? XCB_NONE : *(place - 1);
  if (below != event.above_sibling) treeDirty_ = true;
  refreshSoon();
}

void WindowStack::refreshSoon() {
  if (pending_) return;
  pending_ = std::make_shared<bool>(true);
  dispatch::MainQueue::shared().async([this, waiting = std::weak_ptr(pending_)] {
    if (waiting.lock()) refresh();
  });
}

void WindowStack::refresh() {
  pending_.reset();
  if (treeDirty_) readTree();
  if (clientsDirty_) readClients();
  Stack stack = compose();
  const bool different = stack != stack_;
  stack_ = std::move(stack);
  // Also where nothing seems to have changed: what we asked for last may have been undone at once.
  restack();
  if (different) changed();
}

void WindowStack::readTree() {
  treeDirty_ = false;
  const auto tree =
      server_.connection().reply(xcb_query_tree_reply, xcb_query_tree(server_.raw(), server_.root()));
  if (!tree) return;
  const xcb_window_t* children = xcb_query_tree_children(tree->get());
  order_.assign(children, children + xcb_query_tree_children_length(tree->get()));
  const std::set<WindowId> present(order_.begin(), order_.end());
  std::erase_if(facts_, [&](const auto& entry) { return !present.contains(entry.first); });
  std::erase_if(frames_, [&](WindowId frame) { return !present.contains(frame); });
  std::vector<WindowId> unknown;
  std::ranges::copy_if(order_, std::back_inserter(unknown),
                       [&](WindowId id) { return !facts_.contains(id); });
  readFacts(unknown);
}

// All questions go out before the first answer is waited for. A window that is gone meanwhile has no facts.
void WindowStack::readFacts(const std::vector<WindowId>& windows) {
  struct Questions {
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
    xcb_shape_query_extents_cookie_t shape;
    xcb_get_property_cookie_t opacity;
  };
  x11::Connection& connection = server_.connection();
  const bool hasShapes = connection.extensions().shape.present;
  std::vector<Questions> questions;
  for (const WindowId window : windows) {
    questions.push_back(
        {xcb_get_window_attributes(server_.raw(), window), xcb_get_geometry(server_.raw(), window),
         hasShapes ? xcb_shape_query_extents(server_.raw(), window) : xcb_shape_query_extents_cookie_t{},
         x11::askProperty(connection, window, server_.atom(x11::Atom::netWmWindowOpacity))});
  }
  for (std::size_t i = 0; i < windows.size(); ++i) {
    const auto attributes = connection.reply(xcb_get_window_attributes_reply, questions[i].attributes);
    const auto geometry = connection.reply(xcb_get_geometry_reply, questions[i].geometry);
    const bool shaped = hasShapes && isShaped(connection, questions[i].shape);
    const bool faded =
        x11::propertyNumber(connection, questions[i].opacity).value_or(UINT32_MAX) != UINT32_MAX;
    if (!attributes || !geometry) continue;
    const int border = 2 * (*geometry)->border_width;
    facts_[windows[i]] = {
        {(*geometry)->x, (*geometry)->y, (*geometry)->width + border, (*geometry)->height + border},
        (*attributes)->map_state == XCB_MAP_STATE_VIEWABLE,
        (*attributes)->_class == XCB_WINDOW_CLASS_INPUT_ONLY,
        (*attributes)->override_redirect != 0,
        faded || (*geometry)->depth == depthWithAlpha || shaped};
  }
}

void WindowStack::readClients() {
  clientsDirty_ = false;
  clients_ = x11::propertyNumbers(server_.connection(), server_.root(), x11::Atom::netClientList);
  const std::set<WindowId> listed(clients_.begin(), clients_.end());
  std::erase_if(topLevels_, [&](const auto& entry) { return !listed.contains(entry.first); });
}

// Climbs from a window to the child of the root window that carries it.
WindowId WindowStack::topLevelOf(WindowId window) {
  if (facts_.contains(window)) return window;
  const auto known = topLevels_.find(window);
  if (known != topLevels_.end()) return known->second;
  WindowId current = window;
  for (;;) {
    const auto tree =
        server_.connection().reply(xcb_query_tree_reply, xcb_query_tree(server_.raw(), current));
    if (!tree) return XCB_NONE;
    if ((*tree)->parent == server_.root() || (*tree)->parent == XCB_NONE) break;
    current = (*tree)->parent;
  }
  return topLevels_[window] = current;
}

Stack WindowStack::compose() {
  std::set<WindowId> managed = frames_;
  for (const WindowId client : clients_)
    managed.insert(topLevelOf(client));
  std::map<WindowId, OwnWindow> own;
  for (const auto& [window, facts] : toolkit::shownWindows())
    own[topLevelOf(window)] = facts;
  Stack stack;
  for (const WindowId id : order_) {
    const auto found = facts_.find(id);
    if (found == facts_.end() || !found->second.viewable || found->second.inputOnly) continue;
    const Facts& facts = found->second;
    const bool ordinary = managed.contains(id) || !facts.overrideRedirect;
    const auto mine = own.find(id);
    stack.push_back({id, facts.rect, ordinary ? StackedBy::manager : StackedBy::itself, !facts.seeThrough,
                     mine == own.end() ? std::nullopt : std::optional(mine->second)});
  }
  return stack;
}

void WindowStack::restack() {
  for (const RestackStep& step : restackSteps(stack_)) {
    const std::uint32_t values[] = {
        step.sibling, step.above ? std::uint32_t{XCB_STACK_MODE_ABOVE} : std::uint32_t{XCB_STACK_MODE_BELOW}};
    xcb_configure_window(server_.raw(), step.window, XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE,
                         values);
  }
  server_.connection().flush();
}

WindowId WindowStack::knownTopLevelOf(WindowId window) const {
  const auto framed = topLevels_.find(window);
  return framed == topLevels_.end() ? window : framed->second;
}

bool WindowStack::isCovered(WindowId window) const {
  return desktop::isCovered(stack_, knownTopLevelOf(window));
}

bool WindowStack::isInFront(WindowId window) const {
  return desktop::isInFront(stack_, knownTopLevelOf(window));
}

bool WindowStack::isOvertopped(WindowId window) const {
  return desktop::isOvertopped(stack_, knownTopLevelOf(window));
}

bool WindowStack::isOwn(WindowId topLevel) const {
  const auto entry = std::ranges::find(stack_, topLevel, &StackedWindow::id);
  return entry != stack_.end() && entry->own.has_value();
}

}  // namespace velicor::desktop
