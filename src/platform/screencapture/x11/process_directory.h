#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include <sys/types.h>

#include "platform/screencapture/screen_capture.h"
#include "platform/screencapture/x11/window_stack.h"
#include "platform/x11/client_set.h"
#include "platform/x11/connection.h"

namespace velicor::screencapture {

// Which process made a window. Our own is known from the list of our connections; the others are what the
// server says, which is nothing for programs on other machines. Used on the capture thread only.
class ProcessDirectory {
 public:
  // Both outlive it.
  ProcessDirectory(x11::Connection& connection, const x11::OwnClients& own);

  // Asks the server for its clients. One round trip.
  void refresh();

  // Whether the window's client was there at the last refresh.
  bool knows(WindowId id) const;

  bool isOwn(WindowId id) const { return own_.snapshot().made(id); }

  // The process that made the window; none where that can't be told. As of the last refresh.
  std::optional<pid_t> processOf(WindowId id) const;

  // The clients of these processes, as of the last refresh; our own as of now.
  x11::ClientSet clientsOf(const std::vector<RunningApplication>& applications) const;

 private:
  x11::Connection& connection_;
  const x11::OwnClients& own_;
  std::map<std::uint32_t, pid_t> processes_;  // by the client's base
};

}  // namespace velicor::screencapture
