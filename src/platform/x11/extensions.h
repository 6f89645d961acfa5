#pragma once

#include <cstdint>

#include <xcb/xcb.h>

namespace velicor::x11 {

// What the server says about one extension. All zero where it does not have it.
struct Extension {
  bool present = false;
  std::uint8_t majorOpcode = 0;
  std::uint8_t firstEvent = 0;
  std::uint8_t firstError = 0;
  std::uint32_t majorVersion = 0;  // the version both sides agreed on
  std::uint32_t minorVersion = 0;

  bool atLeast(std::uint32_t major, std::uint32_t minor) const {
    return present && (majorVersion > major || (majorVersion == major && minorVersion >= minor));
  }
};

struct Extensions {
  Extension composite;
  Extension damage;
  Extension fixes;
  Extension input;
  Extension randr;
  Extension render;
  Extension resource;
  Extension shape;
  Extension shm;
  bool xwayland = false;  // only the X bridge of a Wayland session has this one
};

// Asks for the version of every extension, which some of them want to see before any other request of a
// client. Two round trips in all.
Extensions negotiateExtensions(xcb_connection_t* connection);

}  // namespace velicor::x11
