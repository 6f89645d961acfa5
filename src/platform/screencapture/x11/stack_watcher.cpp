#include "platform/screencapture/x11/stack_watcher.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <xcb/shape.h>
#include <xcb/xfixes.h>

#include "platform/x11/properties.h"

namespace velicor::screencapture {

namespace {

using x11::Atom;
using x11::Connection;

// A manager's frame holds the program's window at most this many levels down, among not more siblings.
constexpr int deepestClient = 3;
constexpr std::size_t mostSiblings = 64;

void select(Connection& connection, WindowId window, std::uint32_t mask) {
  xcb_change_window_attributes(connection.raw(), window, XCB_CW_EVENT_MASK, &mask);
}

DeviceRect outerRect(int x, int y, int width, int height, int border) {
  return {x, y, width + 2 * border, height + 2 * border};
}

std::vector<WindowId> childrenOf(Connection& connection, xcb_query_tree_cookie_t cookie) {
  const auto reply = connection.reply(xcb_query_tree_reply, cookie);
  if (!reply) return {};
  const xcb_window_t* children = xcb_query_tree_children(reply->get());
  return {children, children + xcb_query_tree_children_length(reply->get())};
}

// Everything that is asked about a new window, under way at once.
struct Description {
  WindowId id;
  xcb_get_window_attributes_cookie_t attributes;
  xcb_get_geometry_cookie_t geometry;
  xcb_shape_query_extents_cookie_t shape;
};

Description ask(Connection& connection, WindowId id) {
  // Selected first: what changes after this request comes as an event.
  select(connection, id, XCB_EVENT_MASK_PROPERTY_CHANGE);
  if (connection.extensions().shape.present) xcb_shape_select_input(connection.raw(), id, 1);
  Description description{id, xcb_get_window_attributes(connection.raw(), id),
                          xcb_get_geometry(connection.raw(), id), {}};
  if (connection.extensions().shape.present) description.shape = xcb_shape_query_extents(connection.raw(), id);
  return description;
}

// None when the window is already gone.
std::optional<StackedWindow> answer(Connection& connection, const VisualFormats& formats, Description asked) {
  const auto attributes = connection.reply(xcb_get_window_attributes_reply, asked.attributes);
  const auto geometry = connection.reply(xcb_get_geometry_reply, asked.geometry);
  const bool hasShape = connection.extensions().shape.present;
  const auto shape = hasShape ? connection.reply(xcb_shape_query_extents_reply, asked.shape)
                              : Result<x11::Owned<xcb_shape_query_extents_reply_t>>();
  if (!attributes || !geometry) return std::nullopt;
  StackedWindow window;
  window.id = asked.id;
  window.border = (*geometry)->border_width;
  window.bounds =
      outerRect((*geometry)->x, (*geometry)->y, (*geometry)->width, (*geometry)->height, window.border);
  window.visual = (*attributes)->visual;
  window.viewable = (*attributes)->map_state == XCB_MAP_STATE_VIEWABLE;
  const VisualFormat* format = formats.find(window.visual);
  window.drawable = (*attributes)->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT && format;
  window.alpha = format && format->alpha;
  window.shaped = shape && *shape && (*shape)->bounding_shaped != 0;
  return window;
}

}  // namespace

StackWatcher::StackWatcher(Connection& connection, const VisualFormats& formats)
    : connection_(connection), formats_(formats) {
  select(connection, connection.root(), XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                            XCB_EVENT_MASK_PROPERTY_CHANGE);
  xcb_xfixes_select_selection_input(connection.raw(), connection.root(), connection.compositorSelection(),
                                    XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                        XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                        XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
}

bool StackWatcher::take(const xcb_generic_event_t& event) {
  const unsigned before = stack_.revision();
  switch (x11::eventType(event)) {
    case XCB_CREATE_NOTIFY:
      stack_.created();
      break;
    case XCB_DESTROY_NOTIFY:
      stack_.destroyed(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
      break;
    case XCB_MAP_NOTIFY:
      stack_.mapped(reinterpret_cast<const xcb_map_notify_event_t&>(event).window);
      break;
    case XCB_UNMAP_NOTIFY:
      stack_.unmapped(reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window);
      break;
    case XCB_GRAVITY_NOTIFY:
    case XCB_CIRCULATE_NOTIFY:
      stack_.circulated();
      break;
    case XCB_CONFIGURE_NOTIFY:
      return takeConfigure(reinterpret_cast<const xcb_configure_notify_event_t&>(event));
    case XCB_REPARENT_NOTIFY:
      takeReparent(reinterpret_cast<const xcb_reparent_notify_event_t&>(event));
      return true;
    case XCB_PROPERTY_NOTIFY:
      takeProperty(reinterpret_cast<const xcb_property_notify_event_t&>(event));
      return isOutdated();
    default:
      return takeExtensionEvent(event);
  }
  return stack_.revision() != before;
}

bool StackWatcher::takeConfigure(const xcb_configure_notify_event_t& event) {
  if (event.window == connection_.root()) return true;
  const unsigned before = stack_.revision();
  stack_.configured(event.window, outerRect(event.x, event.y, event.width, event.height, event.border_width),
                    event.border_width, event.above_sibling);
  return stack_.revision() != before;
}

void StackWatcher::takeReparent(const xcb_reparent_notify_event_t& event) {
  if (event.parent == connection_.root()) return stack_.enteredRoot();
  stack_.leftRoot(event.window);
  // The frame itself where the new parent is a child of the root window, as with most managers.
  if (stack_.find(event.parent)) {
    setClient(event.parent, event.window);
  } else {
    reparented_.push_back({event.window, event.parent});
  }
}

void StackWatcher::takeProperty(const xcb_property_notify_event_t& event) {
  const auto is = [&](Atom name) { return event.atom == connection_.atom(name); };
  if (event.window == connection_.root()) {
    rootOutdated_ = rootOutdated_ || is(Atom::xrootPixmapId) || is(Atom::esetrootPixmapId) ||
                    is(Atom::netCurrentDesktop);
    return;
  }
  if (!is(Atom::netWmState) && !is(Atom::netWmDesktop) && !is(Atom::netWmWindowOpacity)) return;
  if (const StackedWindow* window = stack_.findByClient(event.window)) propertiesOutdated_.insert(window->id);
}

bool StackWatcher::takeExtensionEvent(const xcb_generic_event_t& event) {
  const x11::Extensions& all = connection_.extensions();
  if (all.shape.present && x11::eventType(event) == all.shape.firstEvent + XCB_SHAPE_NOTIFY) {
    const auto& notify = reinterpret_cast<const xcb_shape_notify_event_t&>(event);
    if (notify.shape_kind != XCB_SHAPE_SK_BOUNDING) return false;
    stack_.shapeChanged(notify.affected_window, notify.shaped != 0);
    return true;
  }
  if (x11::eventType(event) == all.fixes.firstEvent + XCB_XFIXES_SELECTION_NOTIFY) {
    compositorOutdated_ = true;
    return true;
  }
  return false;
}

bool StackWatcher::isOutdated() const {
  return stack_.needsQuery() || rootOutdated_ || compositorOutdated_ || !propertiesOutdated_.empty() ||
         !reparented_.empty();
}

void StackWatcher::refresh() {
  if (std::exchange(compositorOutdated_, false)) readCompositor();
  if (std::exchange(rootOutdated_, false)) readRoot();
  if (stack_.needsQuery()) readStack();
  for (const Reparented& found : std::exchange(reparented_, {})) climb(found);
  readProperties();
}

void StackWatcher::readStack() {
  const auto children = childrenOf(connection_, xcb_query_tree(connection_.raw(), connection_.root()));
  describe(stack_.reorder(children));
}

void StackWatcher::describe(const std::vector<WindowId>& ids) {
  std::vector<Description> asked;
  asked.reserve(ids.size());
  for (const WindowId id : ids) asked.push_back(ask(connection_, id));
  std::vector<WindowId> there;
  for (const Description& description : asked) {
    const auto window = answer(connection_, formats_, description);
    if (!window) {
      stack_.forget(description.id);
      continue;
    }
    stack_.describe(*window);
    there.push_back(window->id);
    propertiesOutdated_.insert(window->id);
  }
  findClients(there);
}

// Programs' windows carry WM_STATE. Frames that a manager makes later tell their client by its reparenting;
// this finds those that were there before us. Level by level, each level in one round trip.
void StackWatcher::findClients(const std::vector<WindowId>& frames) {
  struct Candidate {
    WindowId frame;
    WindowId window;
  };
  std::vector<Candidate> level;
  for (const WindowId frame : frames) level.push_back({frame, frame});
  for (int depth = 0; depth <= deepestClient && !level.empty(); ++depth) {
    std::vector<std::pair<xcb_get_property_cookie_t, xcb_query_tree_cookie_t>> cookies;
    cookies.reserve(level.size());
    for (const Candidate& candidate : level) {
      cookies.emplace_back(x11::askProperty(connection_, candidate.window, connection_.atom(Atom::wmState)),
                           xcb_query_tree(connection_.raw(), candidate.window));
    }
    std::vector<Candidate> below;
    for (std::size_t i = 0; i < level.size(); ++i) {
      const bool isClient = x11::propertyNumber(connection_, cookies[i].first).has_value();
      const auto children = childrenOf(connection_, cookies[i].second);
      if (isClient && depth > 0) setClient(level[i].frame, level[i].window);
      if (isClient || depth == deepestClient || children.size() > mostSiblings) continue;
      for (const WindowId child : children) below.push_back({level[i].frame, child});
    }
    level = std::move(below);
  }
}

// From the new parent of a window up to the child of the root window that holds it.
void StackWatcher::climb(Reparented found) {
  WindowId window = found.parent;
  for (int height = 0; height <= deepestClient; ++height) {
    if (stack_.find(window)) return setClient(window, found.window);
    const auto reply = connection_.reply(xcb_query_tree_reply, xcb_query_tree(connection_.raw(), window));
    if (!reply || (*reply)->parent == XCB_NONE) return;
    if ((*reply)->parent == connection_.root()) return setClient(window, found.window);
    window = (*reply)->parent;
  }
}

void StackWatcher::setClient(WindowId frame, WindowId client) {
  stack_.clientFound(frame, client);
  select(connection_, client, XCB_EVENT_MASK_PROPERTY_CHANGE);
  propertiesOutdated_.insert(frame);
}

void StackWatcher::readProperties() {
  struct Asked {
    WindowId id;
    xcb_get_property_cookie_t state, desktop, opacity, clientOpacity;
  };
  std::vector<Asked> all;
  for (const WindowId id : std::exchange(propertiesOutdated_, {})) {
    const StackedWindow* window = stack_.find(id);
    if (!window) continue;
    const WindowId client = window->client != 0 ? window->client : id;
    const auto askOf = [this](WindowId owner, Atom name) {
      return x11::askProperty(connection_, owner, connection_.atom(name));
    };
    all.push_back({id, askOf(client, Atom::netWmState), askOf(client, Atom::netWmDesktop),
                   askOf(id, Atom::netWmWindowOpacity), askOf(client, Atom::netWmWindowOpacity)});
  }
  const xcb_atom_t hidden = connection_.atom(Atom::netWmStateHidden);
  for (const Asked& asked : all) {
    const auto states = x11::propertyNumbers(connection_, asked.state);
    const bool minimised = std::find(states.begin(), states.end(), hidden) != states.end();
    const auto desktop = x11::propertyNumber(connection_, asked.desktop);
    const auto ownOpacity = x11::propertyNumber(connection_, asked.opacity);
    const auto clientOpacity = x11::propertyNumber(connection_, asked.clientOpacity);
    stack_.shownAs(asked.id, minimised, desktop, ownOpacity.value_or(clientOpacity.value_or(fullyOpaque)));
  }
}

void StackWatcher::readRoot() {
  const auto askRoot = [this](Atom name) {
    return x11::askProperty(connection_, connection_.root(), connection_.atom(name));
  };
  const auto xroot = askRoot(Atom::xrootPixmapId);
  const auto esetroot = askRoot(Atom::esetrootPixmapId);
  const auto desktop = askRoot(Atom::netCurrentDesktop);
  const auto first = x11::propertyNumber(connection_, xroot);
  const auto second = x11::propertyNumber(connection_, esetroot);
  stack_.currentDesktopIs(x11::propertyNumber(connection_, desktop));

  ++background_.generation;
  background_.pixmap = first ? *first : second.value_or(0);
  if (background_.pixmap == 0) return;
  // Left behind by a program that is gone, or meant for another depth: the screen then shows something else.
  const auto geometry =
      connection_.reply(xcb_get_geometry_reply, xcb_get_geometry(connection_.raw(), background_.pixmap));
  if (!geometry || (*geometry)->depth != connection_.screen().root_depth) background_.pixmap = 0;
}

void StackWatcher::readCompositor() {
  const auto owner = connection_.reply(
      xcb_get_selection_owner_reply, xcb_get_selection_owner(connection_.raw(), connection_.compositorSelection()));
  composited_ = owner && (*owner)->owner != XCB_NONE;
  // Some managers redirect in a way of their own when they start or end: the old names may be stale.
  stack_.pixmapsMoved();
}

}  // namespace velicor::screencapture
