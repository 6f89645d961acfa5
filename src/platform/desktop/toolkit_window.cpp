#include "platform/desktop/toolkit_window.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string_view>
#include <vector>

#include <xcb/shape.h>
#include <xcb/xcb.h>
#include <QApplication>
#include <QBackingStore>
#include <QPainter>
#include <QRegion>
#include <QResizeEvent>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include "platform/x11/own_clients.h"
#include "platform/x11/owned.h"

namespace velicor::desktop::toolkit {

namespace {

constexpr const char* levelProperty = "velicorLevel";
constexpr const char* bypassingProperty = "velicorBypassing";

// None on another platform than X11, such as the off-screen one.
xcb_connection_t* connection() {
  const auto* native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return native ? native->connection() : nullptr;
}

// The toolkit's screens keep their top-left corner in device pixels and scale their size.
DeviceRect deviceRectOf(const QScreen& screen) {
  const QRect logical = screen.geometry();
  const double scale = screen.devicePixelRatio();
  return {logical.x(), logical.y(), roundHalfAway(logical.width() * scale),
          roundHalfAway(logical.height() * scale)};
}

xcb_window_t root() { return xcb_setup_roots_iterator(xcb_get_setup(connection())).data->root; }

// A checked request whose outcome nobody wants: neither an error nor its report by the toolkit.
void forget(xcb_void_cookie_t cookie) {
  xcb_discard_reply(connection(), cookie.sequence);
  xcb_flush(connection());
}

// XCB_ATOM_NONE where the server has gone. A round trip.
xcb_atom_t atom(std::string_view name);

void setNumbers(WindowId window, xcb_atom_t property, xcb_atom_t type,
                std::span<const std::uint32_t> values) {
  forget(xcb_change_property_checked(connection(), XCB_PROP_MODE_REPLACE, window, property, type, 32,
                                     static_cast<std::uint32_t>(values.size()), values.data()));
}

std::uint32_t asWord(int value) { return static_cast<std::uint32_t>(value); }

template <typename Reply, typename Cookie>
x11::Owned<Reply> reply(Reply* (*fetch)(xcb_connection_t*, Cookie, xcb_generic_error_t**), Cookie cookie) {
  xcb_generic_error_t* error = nullptr;
  x11::Owned<Reply> result(fetch(connection(), cookie, &error));
  const x11::Owned<xcb_generic_error_t> dropped(error);
  return result;
}

xcb_atom_t atom(std::string_view name) {
  const auto cookie = xcb_intern_atom(connection(), 0, static_cast<std::uint16_t>(name.size()), name.data());
  const auto answer = reply(xcb_intern_atom_reply, cookie);
  return answer ? answer->atom : xcb_atom_t{XCB_ATOM_NONE};
}

}  // namespace

bool isManaged(const QWidget& window) {
  return window.windowType() != Qt::Popup && window.windowType() != Qt::ToolTip &&
         !window.windowFlags().testFlag(Qt::X11BypassWindowManagerHint);
}

void joinOwnClients() {
  if (xcb_connection_t* const own = connection()) x11::OwnClients::shared().add(own);
}

WindowId identifierOf(QWidget& window) {
  if (!connection()) return 0;
  // The widget's own idea may be of a window that the toolkit has replaced since.
  const WId made = window.winId();
  return static_cast<WindowId>(window.windowHandle() ? window.windowHandle()->winId() : made);
}

void configure(WindowId window, const DeviceRect& rect) {
  if (window == 0) return;
  const std::uint32_t values[] = {asWord(rect.x), asWord(rect.y), asWord(rect.width), asWord(rect.height)};
  const std::uint16_t mask =
      XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT;
  forget(xcb_configure_window_checked(connection(), window, mask, values));
}

void resize(WindowId window, int width, int height) {
  if (window == 0) return;
  const std::uint32_t values[] = {asWord(width), asWord(height)};
  const std::uint16_t mask = XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT;
  forget(xcb_configure_window_checked(connection(), window, mask, values));
}

std::optional<DeviceRect> geometryOf(WindowId window) {
  if (window == 0) return std::nullopt;
  const auto sizeCookie = xcb_get_geometry(connection(), window);
  const auto placeCookie = xcb_translate_coordinates(connection(), window, root(), 0, 0);
  const auto size = reply(xcb_get_geometry_reply, sizeCookie);
  const auto place = reply(xcb_translate_coordinates_reply, placeCookie);
  if (!size || !place) return std::nullopt;
  return DeviceRect{place->dst_x, place->dst_y, size->width, size->height};
}

bool isViewable(WindowId window) {
  if (window == 0) return false;
  const auto attributes =
      reply(xcb_get_window_attributes_reply, xcb_get_window_attributes(connection(), window));
  return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

void map(WindowId window) {
  if (window != 0) forget(xcb_map_window_checked(connection(), window));
}

void withdraw(WindowId window) {
  if (window == 0) return;
  forget(xcb_unmap_window_checked(connection(), window));
  xcb_unmap_notify_event_t event{};
  event.response_type = XCB_UNMAP_NOTIFY;
  event.event = root();
  event.window = window;
  forget(xcb_send_event_checked(connection(), 0, root(),
                                XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                                reinterpret_cast<const char*>(&event)));
}

void returnToRoot(WindowId window) {
  if (window == 0) return;
  const auto tree = reply(xcb_query_tree_reply, xcb_query_tree(connection(), window));
  const auto place = geometryOf(window);
  if (!tree || !place || tree->parent == root()) return;
  forget(xcb_reparent_window_checked(connection(), window, root(), static_cast<std::int16_t>(place->x),
                                     static_cast<std::int16_t>(place->y)));
}

void setClickThrough(WindowId window, bool on) {
  // A server that does not trust us has no shapes for us, and xcb would end the connection. Of a server that
  // is gone there is no answer.
  const auto* shape = xcb_get_extension_data(connection(), &xcb_shape_id);
  if (window == 0 || !shape || !shape->present) return;
  // The toolkit's own flag would leave a rectangle behind that does not follow the window's size.
  forget(on ? xcb_shape_rectangles_checked(connection(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT,
                                           XCB_CLIP_ORDERING_UNSORTED, window, 0, 0, 0, nullptr)
            : xcb_shape_mask_checked(connection(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, window, 0, 0,
                                     XCB_PIXMAP_NONE));
}

QScreen* screenAt(DevicePoint pixel) {
  const QList<QScreen*> all = QGuiApplication::screens();
  const auto found = std::ranges::find_if(
      all, [pixel](const QScreen* screen) { return deviceRectOf(*screen).contains(pixel); });
  return found == all.end() ? nullptr : *found;
}

DevicePoint devicePoint(const QPointF& global) {
  const QScreen* screen = qGuiApp->screenAt(global.toPoint());
  if (!screen) screen = qGuiApp->primaryScreen();
  if (!screen) return {roundHalfAway(global.x()), roundHalfAway(global.y())};
  const QPointF origin = screen->geometry().topLeft();
  const QPointF way = (global - origin) * screen->devicePixelRatio();
  return {roundHalfAway(origin.x() + way.x()), roundHalfAway(origin.y() + way.y())};
}

WindowId focusedWindow() {
  if (!connection()) return 0;
  const auto focus = reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection()));
  return focus ? focus->focus : WindowId{XCB_NONE};
}

void focus(WindowId window, std::uint32_t time) {
  if (!connection()) return;
  forget(xcb_set_input_focus_checked(connection(), XCB_INPUT_FOCUS_POINTER_ROOT, window, time));
}

void focusIfViewable(WindowId window, std::uint32_t time) {
  if (connection()) focus(isViewable(window) ? window : WindowId{XCB_INPUT_FOCUS_POINTER_ROOT}, time);
}

void removeShadow(WindowId window) {
  if (window == 0) return;
  const std::uint32_t none = 0;
  setNumbers(window, atom("_COMPTON_SHADOW"), XCB_ATOM_CARDINAL, {&none, 1});
}

void setBlurBehind(WindowId window, const QRegion& parts) {
  if (window == 0) return;
  const xcb_atom_t property = atom("_KDE_NET_WM_BLUR_BEHIND_REGION");
  if (parts.isEmpty()) return forget(xcb_delete_property_checked(connection(), window, property));
  std::vector<std::uint32_t> values;
  for (const QRect& part : parts) {
    values.insert(values.end(),
                  {asWord(part.x()), asWord(part.y()), asWord(part.width()), asWord(part.height())});
  }
  setNumbers(window, property, XCB_ATOM_CARDINAL, values);
}

namespace {

// Which the toolkit adds to, and whoever manages the window.
void setStateBeforeMap(WindowId window, xcb_atom_t state, bool on) {
  const xcb_atom_t property = atom("_NET_WM_STATE");
  const auto present = reply(xcb_get_property_reply,
                             xcb_get_property(connection(), 0, window, property, XCB_ATOM_ATOM, 0, 64));
  std::vector<std::uint32_t> states;
  if (present && present->format == 32) {
    const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(present.get()));
    states.assign(first, first + present->value_len);
  }
  std::erase(states, state);
  if (on) states.push_back(state);
  setNumbers(window, property, XCB_ATOM_ATOM, states);
}

void askManager(WindowId window, std::string_view what, const std::array<std::uint32_t, 4>& values) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = atom(what);
  std::ranges::copy(values, event.data.data32);
  forget(xcb_send_event_checked(connection(), 0, root(),
                                XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                                reinterpret_cast<const char*>(&event)));
}

constexpr std::uint32_t fromApplication = 1;

// The state of a window that is on the screen is the manager's to change.
void setState(WindowId window, std::string_view name, bool on) {
  const xcb_atom_t state = atom(name);
  if (!isViewable(window)) return setStateBeforeMap(window, state, on);
  askManager(window, "_NET_WM_STATE", {on ? 1U : 0U, state, 0, fromApplication});
}

}  // namespace

void joinAllDesktops(WindowId window) {
  if (window == 0) return;
  const std::uint32_t all = UINT32_MAX;
  if (isViewable(window)) {
    askManager(window, "_NET_WM_DESKTOP", {all, fromApplication, 0, 0});
  } else {
    setNumbers(window, atom("_NET_WM_DESKTOP"), XCB_ATOM_CARDINAL, {&all, 1});
  }
  // xfwm4 takes the number for one beyond the last desktop, unless the window is sticky too.
  setState(window, "_NET_WM_STATE_STICKY", true);
}

void setBypassing(QWidget& window, bool bypassing) {
  if (!connection()) return;
  window.setProperty(bypassingProperty, bypassing);
  const std::uint32_t value = bypassing ? 1 : 0;
  forget(xcb_change_window_attributes_checked(connection(), identifierOf(window), XCB_CW_OVERRIDE_REDIRECT,
                                              &value));
}

// What else the toolkit has said in the property stays, but for the steps in which a window may grow.
void fixSize(WindowId window, const DeviceRect& rect) {
  if (window == 0) return;
  constexpr std::uint32_t hasMinimumSize = 1U << 4;
  constexpr std::uint32_t hasMaximumSize = 1U << 5;
  constexpr std::uint32_t hasSteps = 1U << 6 | 1U << 8;
  std::array<std::uint32_t, 18> hints{};
  const auto present =
      reply(xcb_get_property_reply, xcb_get_property(connection(), 0, window, XCB_ATOM_WM_NORMAL_HINTS,
                                                     XCB_ATOM_WM_SIZE_HINTS, 0, hints.size()));
  if (present && xcb_get_property_value_length(present.get()) == sizeof hints) {
    std::memcpy(hints.data(), xcb_get_property_value(present.get()), sizeof hints);
  }
  hints[0] = (hints[0] | hasMinimumSize | hasMaximumSize) & ~hasSteps;
  hints[5] = hints[7] = asWord(rect.width);
  hints[6] = hints[8] = asWord(rect.height);
  setNumbers(window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, hints);
}

void setInTaskbar(QWidget& window, bool listed) {
  if (!connection() || !isManaged(window)) return;
  const WindowId id = identifierOf(window);
  // Lists leave out utility windows whatever their state.
  const xcb_atom_t type = atom(listed ? "_NET_WM_WINDOW_TYPE_NORMAL" : "_NET_WM_WINDOW_TYPE_UTILITY");
  setNumbers(id, atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, {&type, 1});
  setState(id, "_NET_WM_STATE_SKIP_TASKBAR", !listed);
  setState(id, "_NET_WM_STATE_SKIP_PAGER", true);
}

void forgetPicture(QWidget& window) {
  QBackingStore* const store = window.backingStore();
  if (!store || store->size().isEmpty()) return;
  const QRect all(QPoint(), store->size());
  store->beginPaint(all);
  {
    QPainter painter(store->paintDevice());
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.fillRect(all, Qt::black);
  }
  store->endPaint();
}

// The toolkit itself makes another picture for another size in points only, and does not tell widgets either.
void renewPicture(QWidget& window) {
  QBackingStore* const store = window.backingStore();
  if (store && !store->size().isEmpty()) store->resize(window.size());
  window.update();
  for (QWidget* widget : window.findChildren<QWidget*>()) {
    QResizeEvent inOtherPixels(widget->size(), widget->size());
    QCoreApplication::sendEvent(widget, &inOtherPixels);
    widget->update();
  }
}

void setLevel(QWidget& window, int level) {
  window.setProperty(levelProperty, level);
  // Never taken back: the toolkit would replace the window at its next showing, with all that was said of it.
  if (level > 0 && isManaged(window) && window.windowHandle()) {
    window.windowHandle()->setFlag(Qt::WindowStaysOnTopHint);
  }
}

int levelOf(const QWidget& window) { return window.property(levelProperty).toInt(); }

std::vector<ShownWindow> shownWindows() {
  std::vector<ShownWindow> shown;
  for (const QWidget* window : QApplication::topLevelWidgets()) {
    if (!window->isVisible() || !window->windowHandle()) continue;
    const Qt::WindowFlags flags = window->windowFlags();
    // Menus and tooltips of ours place themselves; only panels are placed by us.
    const bool bypassing =
        window->property(bypassingProperty).toBool() ||
        (flags.testFlag(Qt::X11BypassWindowManagerHint) && window->property(levelProperty).isValid());
    shown.push_back({static_cast<WindowId>(window->windowHandle()->winId()), {levelOf(*window), bypassing}});
  }
  return shown;
}

}  // namespace velicor::desktop::toolkit
