#pragma once

#include <optional>
#include <string>

#include "platform/x11/connection.h"

// Whether this is a session in which an X client can see other programs' windows.
namespace velicor::x11 {

// The exit status of a program that can't run in this kind of session (EX_UNAVAILABLE).
inline constexpr int exitUnavailable = 69;

// What the environment says about the session; readable before there is a connection.
struct SessionEnvironment {
  std::string sessionType;     // XDG_SESSION_TYPE
  std::string waylandDisplay;  // WAYLAND_DISPLAY
};
SessionEnvironment sessionEnvironment();

// In a Wayland session the line to print before ending with exitUnavailable, else none.
std::optional<std::string> waylandRefusal(const SessionEnvironment& environment);

// The same from what the server is: the X bridge of a Wayland session gives itself away by an extension or by
// the names of its outputs.
std::optional<std::string> waylandRefusal(Connection& connection);

}  // namespace velicor::x11
