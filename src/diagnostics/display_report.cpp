#include "diagnostics/display_report.h"

#include <array>
#include <sstream>
#include <string_view>

#include "platform/desktop/desktop.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/x11/properties.h"
#include "platform/x11/session_kind.h"

namespace velicor {

namespace {

using x11::Extension;
using x11::Extensions;

struct NamedExtension {
  std::string_view name;
  Extension Extensions::*extension;
};

constexpr std::array extensions{
    NamedExtension{"Composite", &Extensions::composite}, NamedExtension{"DAMAGE", &Extensions::damage},
    NamedExtension{"XFIXES", &Extensions::fixes},        NamedExtension{"XInputExtension", &Extensions::input},
    NamedExtension{"RANDR", &Extensions::randr},         NamedExtension{"RENDER", &Extensions::render},
    NamedExtension{"X-Resource", &Extensions::resource}, NamedExtension{"SHAPE", &Extensions::shape},
    NamedExtension{"MIT-SHM", &Extensions::shm}};

std::string serverLine(x11::Connection& server) {
  const xcb_setup_t& setup = *xcb_get_setup(server.raw());
  const std::string vendor(xcb_setup_vendor(&setup), static_cast<std::size_t>(xcb_setup_vendor_length(&setup)));
  std::ostringstream line;
  line << vendor << ", release " << setup.release_number << ", screen " << server.screenNumber() << " of "
       << server.screen().width_in_pixels << "x" << server.screen().height_in_pixels << " pixels, depth "
       << static_cast<int>(server.screen().root_depth);
  return line.str();
}

std::string extensionLine(const Extensions& all) {
  std::ostringstream line;
  for (const NamedExtension& named : extensions) {
    const Extension& extension = all.*named.extension;
    line << (line.tellp() > 0 ? ", " : "") << named.name << ' ';
    extension.present ? line << extension.majorVersion << '.' << extension.minorVersion : line << "missing";
  }
  return line.str();
}

std::string nameOf(x11::Connection& server, xcb_window_t window) {
  const std::string name = x11::propertyText(server, window, x11::Atom::netWmName);
  return name.empty() ? "there, without a name" : name;
}

// The window by which a manager shows itself names itself too, unless it is left over from one that went.
std::string windowManager(x11::Connection& server) {
  const auto sign = x11::propertyNumbers(server, server.root(), x11::Atom::netSupportingWmCheck);
  if (sign.empty()) return "none, or one that says nothing";
  if (x11::propertyNumbers(server, sign.front(), x11::Atom::netSupportingWmCheck) != sign) return "none any more";
  return nameOf(server, sign.front());
}

std::string compositor(x11::Connection& server) {
  const auto owner = server.reply(xcb_get_selection_owner_reply,
                                  xcb_get_selection_owner(server.raw(), server.compositorSelection()));
  return owner && (*owner)->owner != XCB_NONE ? nameOf(server, (*owner)->owner) : "none";
}

std::string screenLine(const desktop::Screen& screen, bool isMain) {
  std::ostringstream line;
  line << "  " << screen.name << ": " << screen.deviceFrame.width << "x" << screen.deviceFrame.height << " pixels at ("
       << screen.deviceFrame.x << ", " << screen.deviceFrame.y << "), scale " << screen.backingScaleFactor
       << ", without bars " << screen.visibleFrame.width << "x" << screen.visibleFrame.height << " points"
       << (isMain ? ", the main one" : "") << "\n";
  return line.str();
}

std::string screenLines() {
  const auto desktop = desktop::Desktop::open();
  if (!desktop) return "screens: " + desktop.error().description + "\n";
  const auto& list = (*desktop)->screens();
  std::string lines = list.screens().empty() ? "screens: none\n" : "screens:\n";
  for (const desktop::Screen& screen : list.screens()) lines += screenLine(screen, list.mainScreen() == screen);
  return lines;
}

}  // namespace

std::string displayReport(x11::Connection& server) {
  const auto refusal = x11::waylandRefusal(server);
  return "X server: " + serverLine(server) + (refusal ? ", the bridge of a Wayland session" : "") +
         "\nextensions: " + extensionLine(server.extensions()) + "\n" + screenLines() +
         "window manager: " + windowManager(server) + "\ncompositing manager: " + compositor(server) + "\n";
}

}  // namespace velicor
