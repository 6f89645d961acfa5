#pragma once

#include <set>
#include <tuple>

#include "platform/x11/connection.h"

namespace velicor::screencapture {

// Puts errors that should not happen into the log, each kind once. Used on the capture thread only.
class ErrorJournal {
 public:
  void take(const x11::Connection& connection, const xcb_generic_error_t& error);

 private:
  std::set<std::tuple<int, int, int>> reported_;
};

}  // namespace velicor::screencapture
