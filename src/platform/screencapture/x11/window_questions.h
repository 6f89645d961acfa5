#pragma once

#include <optional>
#include <vector>

#include "platform/screencapture/x11/visual_formats.h"
#include "platform/screencapture/x11/window_stack.h"
#include "platform/x11/connection.h"

// What has to be asked about windows, because events do not tell it. Everything about all of them is under
// way at once, so that a function costs one round trip however many windows there are. Windows that are gone
// have no answers. What is asked is watched first: what changes after the question comes as an event.
namespace velicor::screencapture {

// A manager's frame holds the program's window at most this many levels down.
inline constexpr int deepestClient = 3;

// A child of the root window, and the program's own window inside it.
struct FramedClient {
  WindowId frame = 0;
  WindowId client = 0;  // 0: there is none
};

std::vector<WindowId> childrenOf(x11::Connection& connection, xcb_query_tree_cookie_t cookie);

// Without an entry for those that are gone. The appearance is left out.
std::vector<StackedWindow> askWindows(x11::Connection& connection, const VisualFormats& formats,
                                      const std::vector<WindowId>& ids);

// The clients of those that are frames. One round trip a level.
std::vector<FramedClient> askClients(x11::Connection& connection, const std::vector<WindowId>& frames);

// How the windows are shown, in the order of the questions.
std::vector<Appearance> askAppearances(x11::Connection& connection, const std::vector<FramedClient>& windows);

// The client of a frame is watched: its properties, its place and its shape.
void watchClient(x11::Connection& connection, WindowId client);

}  // namespace velicor::screencapture
