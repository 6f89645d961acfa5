#include "platform/screencapture/x11/stack_watcher.h"

#include <string>
#include <utility>

#include <xcb/shape.h>
#include <xcb/xfixes.h>

#include "platform/log/log.h"
#include "platform/screencapture/x11/window_questions.h"
#include "platform/x11/properties.h"

namespace velicor::screencapture {

namespace {

using x11::Atom;
using x11::Connection;

void selectEvents(Connection& connection, WindowId window, std::uint32_t mask) {
  xcb_change_window_attributes(connection.raw(), window, XCB_CW_EVENT_MASK, &mask);
}

DeviceRect outerRect(int x, int y, int width, int height, int border) {
  return {x, y, width + 2 * border, height + 2 * border};
}

}  // namespace

StackWatcher::StackWatcher(Connection& connection, const VisualFormats& formats)
    : connection_(connection), formats_(formats) {
  selectEvents(
      connection, connection.root(),
      XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE);
  xcb_xfixes_select_selection_input(connection.raw(), connection.root(), connection.compositorSelection(),
                                    XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                        XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                        XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
}

// The root window tells of its children. What clients tell of themselves concerns their places inside their
// frames, and may come when the model has them outside already.
bool StackWatcher::take(const xcb_generic_event_t& event) {
  const unsigned before = stack_.revision();
  switch (x11::eventType(event)) {
    case XCB_CREATE_NOTIFY:
      stack_.created();
      break;
    case XCB_DESTROY_NOTIFY: {
      const auto& gone = reinterpret_cast<const xcb_destroy_notify_event_t&>(event);
      if (gone.event == connection_.root()) stack_.destroyed(gone.window);
      break;
    }
    case XCB_MAP_NOTIFY: {
      const auto& map = reinterpret_cast<const xcb_map_notify_event_t&>(event);
      if (map.event == connection_.root()) stack_.mapped(map.window);
      break;
    }
    case XCB_UNMAP_NOTIFY: {
      const auto& unmap = reinterpret_cast<const xcb_unmap_notify_event_t&>(event);
      if (unmap.event == connection_.root()) stack_.unmapped(unmap.window);
      break;
    }
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
  const StackedWindow* window = stack_.findByClient(event.window);
  if (!window) return false;
  const DeviceRect bounds = outerRect(event.x, event.y, event.width, event.height, event.border_width);
  // A frame and its client change one after the other, in any order.
  const bool resized = bounds.width != window->bounds.width || bounds.height != window->bounds.height;
  if (window->client != 0 && (resized || window->id != event.window)) appearanceOutdated_.insert(window->id);
  if (window->id != event.window) return true;
  if (event.event != connection_.root()) return false;
  const unsigned before = stack_.revision();
  stack_.configured(event.window, bounds, event.border_width, event.above_sibling);
  return stack_.revision() != before;
}

void StackWatcher::takeReparent(const xcb_reparent_notify_event_t& event) {
  const StackedWindow* frame = stack_.findByClient(event.window);
  if (frame && frame->id != event.window && frame->id != event.parent) setClient(frame->id, XCB_NONE);
  std::erase_if(reparented_, [&](const Reparented& before) { return before.window == event.window; });
  if (event.parent == connection_.root()) return stack_.enteredRoot(event.window);
  stack_.leftRoot(event.window);
  // Most managers' frames are children of the root window: such a one counts at once, and refresh() looks
  // whether it is a frame.
  const StackedWindow* parent = stack_.find(event.parent);
  if (parent && parent->client == XCB_NONE) setClient(event.parent, event.window);
  reparented_.push_back({event.window, event.parent});
}

void StackWatcher::takeProperty(const xcb_property_notify_event_t& event) {
  const auto is = [&](Atom name) { return event.atom == connection_.atom(name); };
  if (event.window == connection_.root()) {
    rootOutdated_ = rootOutdated_ || is(Atom::xrootPixmapId) || is(Atom::esetrootPixmapId) ||
                    is(Atom::netCurrentDesktop) || is(Atom::netSupportingWmCheck);
    return;
  }
  const StackedWindow* window = stack_.findByClient(event.window);
  if (!window) return;
  const bool decides = is(Atom::netWmState) || is(Atom::netWmDesktop) || is(Atom::netWmWindowOpacity) ||
                       is(Atom::netFrameExtents) || is(Atom::netWmOpaqueRegion) ||
                       (window->unmanaged && event.atom == XCB_ATOM_WM_NAME);
  if (decides) appearanceOutdated_.insert(window->id);
}

bool StackWatcher::takeExtensionEvent(const xcb_generic_event_t& event) {
  const x11::Extensions& all = connection_.extensions();
  if (all.shape.present && x11::eventType(event) == all.shape.firstEvent + XCB_SHAPE_NOTIFY) {
    const auto& notify = reinterpret_cast<const xcb_shape_notify_event_t&>(event);
    if (notify.shape_kind != XCB_SHAPE_SK_BOUNDING) return false;
    stack_.shapeChanged(notify.affected_window, notify.shaped != 0);
    if (stack_.find(notify.affected_window)) appearanceOutdated_.insert(notify.affected_window);
    return true;
  }
  if (x11::eventType(event) == all.fixes.firstEvent + XCB_XFIXES_SELECTION_NOTIFY) {
    compositorOutdated_ = true;
    return true;
  }
  return false;
}

bool StackWatcher::isOutdated() const {
  return stack_.needsQuery() || rootOutdated_ || compositorOutdated_ || !appearanceOutdated_.empty() ||
         !reparented_.empty();
}

bool StackWatcher::isOverdue() const {
  constexpr std::size_t mostReparented = 32;
  return reparented_.size() > mostReparented;
}

void StackWatcher::refresh() {
  if (std::exchange(compositorOutdated_, false)) readCompositor();
  if (std::exchange(rootOutdated_, false)) readRoot();
  if (stack_.needsQuery()) readStack();
  readReparented();
  readAppearances();
}

void StackWatcher::readStack() {
  const auto children = childrenOf(connection_, xcb_query_tree(connection_.raw(), connection_.root()));
  describe(stack_.reorder(children));
}

void StackWatcher::describe(const std::vector<WindowId>& ids) {
  std::set<WindowId> gone(ids.begin(), ids.end());
  std::vector<WindowId> there;
  for (StackedWindow& window : askWindows(connection_, formats_, ids)) {
    gone.erase(window.id);
    there.push_back(window.id);
    if (window.drawable && !formats_.find(window.visual)) leaveOut(window);
    stack_.describe(window);
    appearanceOutdated_.insert(window.id);
  }
  for (const WindowId id : gone)
    stack_.forget(id);
  for (const FramedClient& found : askClients(connection_, there))
    setClient(found.frame, found.client);
}

void StackWatcher::leaveOut(StackedWindow& window) {
  window.drawable = false;
  if (!undecodable_.insert(window.visual).second) return;
  log::Logger("x11").error("windows of visual " + std::to_string(window.visual) +
                           " are not captured: the X server can't convert their pixels");
}

void StackWatcher::readReparented() {
  if (reparented_.empty()) return;
  const auto tray = connection_.reply(
      xcb_get_selection_owner_reply, xcb_get_selection_owner(connection_.raw(), connection_.traySelection()));
  for (const Reparented& found : std::exchange(reparented_, {})) {
    const WindowId frame =
        tray && isTrayPart(found.parent, (*tray)->owner) ? XCB_NONE : frameAround(found.parent);
    const StackedWindow* parent = stack_.find(found.parent);
    if (frame != XCB_NONE) {
      setClient(frame, found.window);
    } else if (parent && parent->client == found.window) {
      setClient(found.parent, XCB_NONE);
    }
  }
}

// A panel that nobody manages takes icons in like a frame does its client, and _XEMBED_INFO tells nothing: Qt
// gives it to every window. A window manager that has a tray of its own makes frames and panel alike.
bool StackWatcher::isTrayPart(WindowId window, WindowId tray) const {
  if (tray == XCB_NONE || !connection_.haveOneMaker(window, tray)) return false;
  return managerWindow_ == XCB_NONE || !connection_.haveOneMaker(tray, managerWindow_);
}

// From the new parent of a window up to the child of the root window that holds it; none where that is no
// manager's frame. What programs embed, such as the icons of a panel, lies inside a client.
WindowId StackWatcher::frameAround(WindowId window) {
  for (int height = 0; height <= deepestClient; ++height) {
    const auto state = x11::askProperty(connection_, window, connection_.atom(Atom::wmState));
    const auto tree = xcb_query_tree(connection_.raw(), window);
    const StackedWindow* known = stack_.findByClient(window);
    const bool isClient = x11::propertyNumber(connection_, state) || (known && known->id != window);
    const auto reply = connection_.reply(xcb_query_tree_reply, tree);
    if (isClient || !reply || (*reply)->parent == XCB_NONE) return XCB_NONE;
    if ((*reply)->parent == connection_.root()) return window;
    window = (*reply)->parent;
  }
  return XCB_NONE;
}

void StackWatcher::setClient(WindowId frame, WindowId client) {
  stack_.clientFound(frame, client);
  if (client != XCB_NONE) watchClient(connection_, client);
  appearanceOutdated_.insert(frame);
}

void StackWatcher::readAppearances() {
  std::vector<FramedClient> windows;
  for (const WindowId id : std::exchange(appearanceOutdated_, {})) {
    if (const StackedWindow* window = stack_.find(id)) windows.push_back({id, window->client});
  }
  const std::vector<Appearance> appearances = askAppearances(connection_, windows);
  for (std::size_t i = 0; i < windows.size(); ++i)
    stack_.shownAs(windows[i].frame, appearances[i]);
}

void StackWatcher::readRoot() {
  const auto askRoot = [this](Atom name) {
    return x11::askProperty(connection_, connection_.root(), connection_.atom(name));
  };
  const auto xroot = askRoot(Atom::xrootPixmapId);
  const auto esetroot = askRoot(Atom::esetrootPixmapId);
  const auto desktop = askRoot(Atom::netCurrentDesktop);
  const auto check = askRoot(Atom::netSupportingWmCheck);
  const auto first = x11::propertyNumber(connection_, xroot);
  const auto second = x11::propertyNumber(connection_, esetroot);
  currentDesktop_ = x11::propertyNumber(connection_, desktop);
  managerWindow_ = x11::propertyNumber(connection_, check).value_or(XCB_NONE);
  followDesktops();

  ++background_.generation;
  background_.pixmap = isBackdrop(first) ? *first : isBackdrop(second) ? *second : XCB_NONE;
}

// One that a program left behind that is gone, or that is meant for another depth, is not what the screen
// shows.
bool StackWatcher::isBackdrop(std::optional<std::uint32_t> pixmap) {
  if (!pixmap || *pixmap == XCB_NONE) return false;
  const auto geometry =
      connection_.reply(xcb_get_geometry_reply, xcb_get_geometry(connection_.raw(), *pixmap));
  return geometry && (*geometry)->depth == connection_.screen().root_depth;
}

// Windows of other desktops stay mapped where the window manager itself composes the screen, and chooses by
// _NET_WM_DESKTOP what it paints. Other managers unmap what is not to be seen, and may show a desktop on each
// monitor while only one of them is the current one.
void StackWatcher::followDesktops() {
  const bool composes = managerWindow_ != XCB_NONE && compositorWindow_ != XCB_NONE &&
                        connection_.haveOneMaker(managerWindow_, compositorWindow_);
  stack_.currentDesktopIs(composes ? currentDesktop_ : std::nullopt);
}

void StackWatcher::readCompositor() {
  const auto owner =
      connection_.reply(xcb_get_selection_owner_reply,
                        xcb_get_selection_owner(connection_.raw(), connection_.compositorSelection()));
  compositorWindow_ = owner ? (*owner)->owner : XCB_NONE;
  followDesktops();
  // Some managers redirect in a way of their own when they start or end: the old names may be stale.
  stack_.pixmapsMoved();
}

}  // namespace velicor::screencapture
