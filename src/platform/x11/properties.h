#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/x11/connection.h"

// Window properties. The asking functions send, so that several can be under way at once; the others read
// what came back.
namespace velicor::x11 {

xcb_get_property_cookie_t askProperty(Connection& connection, xcb_window_t window, xcb_atom_t property);

// The values of a property in format 32 (numbers, atoms, windows); empty where there is none.
std::vector<std::uint32_t> propertyNumbers(Connection& connection, xcb_get_property_cookie_t cookie);
std::optional<std::uint32_t> propertyNumber(Connection& connection, xcb_get_property_cookie_t cookie);

// The bytes of a property in format 8; empty where there is none.
std::string propertyText(Connection& connection, xcb_get_property_cookie_t cookie);

// The same with a round trip each.
std::vector<std::uint32_t> propertyNumbers(Connection& connection, xcb_window_t window, Atom property);
std::string propertyText(Connection& connection, xcb_window_t window, Atom property);

}  // namespace velicor::x11
