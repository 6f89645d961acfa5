#include "platform/screencapture/x11/content_listing.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include <unistd.h>

#include "platform/base/product.h"
#include "platform/x11/properties.h"

namespace velicor::screencapture {

namespace {

using x11::Atom;
using Windows = std::vector<const StackedWindow*>;

// The program's own window, whoever made the frame.
WindowId ownerOf(const StackedWindow& window) { return window.client != 0 ? window.client : window.id; }

std::set<WindowId> desktopsAmong(x11::Connection& connection, const Windows& windows) {
  std::vector<std::pair<WindowId, xcb_get_property_cookie_t>> asked;
  for (const StackedWindow* window : windows) {
    asked.emplace_back(
        window->id, x11::askProperty(connection, ownerOf(*window), connection.atom(Atom::netWmWindowType)));
  }
  std::set<WindowId> desktops;
  for (const auto& [id, cookie] : asked) {
    const auto types = x11::propertyNumbers(connection, cookie);
    const xcb_atom_t desktop = connection.atom(Atom::netWmWindowTypeDesktop);
    if (std::find(types.begin(), types.end(), desktop) != types.end()) desktops.insert(id);
  }
  return desktops;
}

}  // namespace

ShareableContent listContent(x11::Connection& connection, const ContentQuery& query, const WindowStack& stack,
                             const ProcessDirectory& processes, const std::vector<x11::Monitor>& monitors) {
  ShareableContent content;
  for (const x11::Monitor& monitor : monitors)
    content.displays.push_back({monitor.id});

  const Windows windows = stack.bottomToTop();
  const Windows visible = stack.visibleBottomToTop();
  const std::set<WindowId> desktops =
      query.excludingDesktopWindows ? desktopsAmong(connection, windows) : std::set<WindowId>();
  std::set<pid_t> listed;
  for (const StackedWindow* window : windows) {
    if (!window->drawable || desktops.contains(window->id)) continue;
    const WindowId owner = ownerOf(*window);
    const bool own = processes.isOwn(owner);
    const bool onScreen = std::find(visible.begin(), visible.end(), window) != visible.end();
    if ((own || query.onScreenWindowsOnly) && !onScreen) continue;
    const auto process = processes.processOf(owner);
    // Under our number, but not ours: a process of another container.
    const bool unlisted = process && (own || *process != getpid()) && listed.insert(*process).second;
    if (unlisted) content.applications.push_back({*process, own ? std::string(product::identifier) : ""});
  }
  return content;
}

}  // namespace velicor::screencapture
