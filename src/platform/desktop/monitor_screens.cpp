#include "platform/desktop/monitor_screens.h"

#include <algorithm>

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

#include "platform/desktop/display_server.h"
#include "platform/desktop/struts.h"
#include "platform/desktop/toolkit_window.h"
#include "platform/x11/monitors.h"
#include "platform/x11/properties.h"

namespace velicor::desktop {

namespace {

// The toolkit knows outputs, the server monitors: usually of the same name, else told by their place.
double toolkitScale(const x11::Monitor& monitor) {
  const QList<QScreen*> all = QGuiApplication::screens();
  const auto named = std::ranges::find_if(
      all, [&](const QScreen* screen) { return screen->name().toStdString() == monitor.name; });
  if (named != all.end()) return (*named)->devicePixelRatio();
  const DevicePoint centre{monitor.rect.x + monitor.rect.width / 2, monitor.rect.y + monitor.rect.height / 2};
  const QScreen* around = toolkit::screenAt(centre);
  return around ? around->devicePixelRatio() : qGuiApp->devicePixelRatio();
}

ScreenLayout layoutOf(const std::vector<x11::Monitor>& monitors) {
  std::vector<MonitorArea> areas;
  for (const x11::Monitor& monitor : monitors)
    areas.push_back({monitor.rect, toolkitScale(monitor)});
  const auto primary = std::ranges::find_if(monitors, &x11::Monitor::primary);
  return {areas, static_cast<std::size_t>(primary - monitors.begin())};
}

std::vector<Strut> readStruts(x11::Connection& connection, const DeviceRect& root) {
  std::vector<std::pair<xcb_get_property_cookie_t, xcb_get_property_cookie_t>> cookies;
  for (const xcb_window_t client :
       x11::propertyNumbers(connection, connection.root(), x11::Atom::netClientList)) {
    cookies.emplace_back(x11::askProperty(connection, client, connection.atom(x11::Atom::netWmStrutPartial)),
                         x11::askProperty(connection, client, connection.atom(x11::Atom::netWmStrut)));
  }
  std::vector<Strut> struts;
  for (const auto& [partial, whole] : cookies) {
    const std::vector<std::uint32_t> twelve = x11::propertyNumbers(connection, partial);
    const std::vector<std::uint32_t> four = x11::propertyNumbers(connection, whole);
    if (!twelve.empty() || !four.empty()) struts.push_back(readStrut(twelve.empty() ? four : twelve, root));
  }
  return struts;
}

DeviceRect rootRect(x11::Connection& connection) {
  const auto geometry =
      connection.reply(xcb_get_geometry_reply, xcb_get_geometry(connection.raw(), connection.root()));
  return geometry ? DeviceRect{0, 0, (*geometry)->width, (*geometry)->height} : DeviceRect{};
}

// The bars' edges within a monitor keep the monitor's own plane: a bar may not move them to a neighbour's.
DesktopRect partOfScreen(const DeviceRect& part, const Screen& screen) {
  const double scale = screen.backingScaleFactor;
  const double height = part.height / scale;
  return {screen.frame.x + (part.x - screen.deviceFrame.x) / scale,
          screen.frame.maxY() - (part.y - screen.deviceFrame.y) / scale - height, part.width / scale, height};
}

}  // namespace

MonitorScreens::MonitorScreens(DisplayServer& server) : server_(server) {
  x11::watchMonitors(server_.connection());
  events_ = server_.event.subscribe([this](const ServerEvent& event) { handle(event); });
  watchToolkit();
  refresh();
}

void MonitorScreens::handle(const ServerEvent& event) {
  if (x11::isMonitorChange(server_.connection(), event.raw)) return refreshSoon();
  if (event.type() == XCB_PROPERTY_NOTIFY) {
    const auto& property = event.as<xcb_property_notify_event_t>();
    const bool bars = property.atom == server_.atom(x11::Atom::netClientList) ||
                      property.atom == server_.atom(x11::Atom::netWorkarea);
    if (property.window == server_.root() && bars) refreshSoon();
  }
}

void MonitorScreens::watchToolkit() {
  const auto watchScreen = [this](const QScreen* screen) {
    QObject::connect(screen, &QScreen::geometryChanged, &toolkit_, [this] { refreshSoon(); });
    QObject::connect(screen, &QScreen::physicalDotsPerInchChanged, &toolkit_, [this] { refreshSoon(); });
    QObject::connect(screen, &QScreen::logicalDotsPerInchChanged, &toolkit_, [this] { refreshSoon(); });
  };
  for (const QScreen* screen : QGuiApplication::screens())
    watchScreen(screen);
  QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &toolkit_,
                   [this, watchScreen](const QScreen* screen) {
                     watchScreen(screen);
                     refreshSoon();
                   });
  QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, &toolkit_, [this] { refreshSoon(); });
}

// A change of monitors comes as a burst of events; one reading on the next turn sees its end.
void MonitorScreens::refreshSoon() {
  if (refreshing_) return;
  refreshing_ = true;
  QTimer::singleShot(0, &toolkit_, [this] {
    refreshing_ = false;
    refresh();
  });
}

void MonitorScreens::refresh() {
  x11::Connection& connection = server_.connection();
  const auto monitors = x11::readMonitors(connection);
  if (!monitors) return;
  const DeviceRect root = rootRect(connection);
  const std::vector<Strut> struts = readStruts(connection, root);
  layout_ = layoutOf(*monitors);
  std::vector<Screen> screens;
  for (std::size_t i = 0; i < monitors->size(); ++i) {
    const x11::Monitor& monitor = (*monitors)[i];
    Screen screen{monitor.name, monitor.id, layout_.frame(i), {}, toolkitScale(monitor), monitor.rect};
    screen.visibleFrame = partOfScreen(withoutStruts(monitor.rect, root, struts), screen);
    screens.push_back(screen);
  }
  if (screens == screens_) return;
  screens_ = std::move(screens);
  changed();
}

std::optional<DeviceRect> MonitorScreens::focusedWindow() const {
  x11::Connection& connection = server_.connection();
  // A window manager that keeps the focus while no window has it does so in a window of its own, out of
  // sight; what it says about the active window comes first.
  const auto active = x11::propertyNumbers(connection, server_.root(), x11::Atom::netActiveWindow);
  const auto focus = connection.reply(xcb_get_input_focus_reply, xcb_get_input_focus(server_.raw()));
  const xcb_window_t window = !active.empty() ? active.front() : focus ? (*focus)->focus : XCB_NONE;
  if (window == XCB_NONE || window == XCB_INPUT_FOCUS_POINTER_ROOT || window == server_.root()) return {};
  const auto sizeCookie = xcb_get_geometry(server_.raw(), window);
  const auto placeCookie = xcb_translate_coordinates(server_.raw(), window, server_.root(), 0, 0);
  const auto size = connection.reply(xcb_get_geometry_reply, sizeCookie);
  const auto place = connection.reply(xcb_translate_coordinates_reply, placeCookie);
  if (!size || !place) return std::nullopt;
  return DeviceRect{(*place)->dst_x, (*place)->dst_y, (*size)->width, (*size)->height};
}

std::optional<Screen> MonitorScreens::mainScreen() const {
  if (screens_.empty()) return std::nullopt;
  const auto window = focusedWindow();
  return screens_[window ? layout_.monitorAt(*window) : layout_.primary()];
}

}  // namespace velicor::desktop
