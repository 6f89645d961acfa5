#include "platform/x11/properties.h"

namespace velicor::x11 {

namespace {

constexpr std::uint32_t longestInWords = 16384;

}  // namespace

xcb_get_property_cookie_t askProperty(Connection& connection, xcb_window_t window, xcb_atom_t property) {
  return xcb_get_property(connection.raw(), 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0,
                          longestInWords);
}

std::vector<std::uint32_t> propertyNumbers(Connection& connection, xcb_get_property_cookie_t cookie) {
  const auto reply = connection.reply(xcb_get_property_reply, cookie);
  if (!reply || (*reply)->format != 32) return {};
  const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply->get()));
  return {values, values + (*reply)->value_len};
}

std::optional<std::uint32_t> propertyNumber(Connection& connection, xcb_get_property_cookie_t cookie) {
  const std::vector<std::uint32_t> values = propertyNumbers(connection, cookie);
  return values.empty() ? std::nullopt : std::optional(values.front());
}

std::string propertyText(Connection& connection, xcb_get_property_cookie_t cookie) {
  const auto reply = connection.reply(xcb_get_property_reply, cookie);
  if (!reply || (*reply)->format != 8) return {};
  return {static_cast<const char*>(xcb_get_property_value(reply->get())), (*reply)->value_len};
}

std::vector<std::uint32_t> propertyNumbers(Connection& connection, xcb_window_t window, Atom property) {
  return propertyNumbers(connection, askProperty(connection, window, connection.atom(property)));
}

std::string propertyText(Connection& connection, xcb_window_t window, Atom property) {
  return propertyText(connection, askProperty(connection, window, connection.atom(property)));
}

}  // namespace velicor::x11
