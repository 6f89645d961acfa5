#include "platform/desktop/reduced_motion.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include <xcb/xcb.h>
#include <QGuiApplication>

#include "platform/x11/owned.h"

namespace velicor::desktop {

namespace {

// Reads the published settings front to back. Once something is missing, everything after it is too.
class SettingsReader {
 public:
  explicit SettingsReader(std::string_view bytes) : bytes_(bytes) {
    bigEndian_ = take(1) == std::string_view("\1", 1);
    take(3);
  }

  bool failed() const { return failed_; }

  std::string_view take(std::size_t count) {
    if (failed_ || count > bytes_.size()) {
      failed_ = true;
      return {};
    }
    const std::string_view taken = bytes_.substr(0, count);
    bytes_.remove_prefix(count);
    return taken;
  }

  // Padded to words.
  std::string_view takePadded(std::size_t count) {
    const std::string_view taken = take(count);
    take((4 - count % 4) % 4);
    return taken;
  }

  std::uint32_t number(std::size_t size) {
    const std::string_view raw = take(size);
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < raw.size(); ++i) {
      const std::size_t place = bigEndian_ ? i : raw.size() - 1 - i;
      value = value << 8 | static_cast<std::uint8_t>(raw[place]);
    }
    return value;
  }

 private:
  std::string_view bytes_;
  bool bigEndian_ = false;
  bool failed_ = false;
};

enum SettingType : std::uint32_t { integer = 0, text = 1, color = 2 };

struct Setting {
  std::uint32_t type = 0;
  std::string_view name;
  std::uint32_t number = 0;  // of an integer
};

std::optional<Setting> next(SettingsReader& reader) {
  Setting setting;
  setting.type = reader.number(1);
  reader.take(1);
  setting.name = reader.takePadded(reader.number(2));
  reader.number(4);  // when it was changed
  if (setting.type == integer) setting.number = reader.number(4);
  if (setting.type == text) reader.takePadded(reader.number(4));
  if (setting.type == color) reader.take(8);
  if (reader.failed() || setting.type > color) return std::nullopt;
  return setting;
}

xcb_atom_t atom(xcb_connection_t* connection, const std::string& name) {
  const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
  const x11::Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

// The daemon may go between the two questions; then there are no settings.
std::string publishedSettings(xcb_connection_t* connection) {
  static const xcb_atom_t selection = atom(connection, "_XSETTINGS_S0");
  static const xcb_atom_t property = atom(connection, "_XSETTINGS_SETTINGS");
  const x11::Owned<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
      connection, xcb_get_selection_owner(connection, selection), nullptr));
  if (!owner || owner->owner == XCB_NONE) return {};
  constexpr std::uint32_t mostWords = 1 << 16;
  const auto cookie =
      xcb_get_property(connection, 0, owner->owner, property, XCB_GET_PROPERTY_TYPE_ANY, 0, mostWords);
  xcb_generic_error_t* error = nullptr;
  const x11::Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection, cookie, &error));
  const x11::Owned<xcb_generic_error_t> dropped(error);
  if (!reply || reply->format != 8) return {};
  const auto* bytes = static_cast<const char*>(xcb_get_property_value(reply.get()));
  return {bytes, static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

}  // namespace

std::optional<int> publishedInteger(std::string_view settings, std::string_view name) {
  SettingsReader reader(settings);
  reader.number(4);  // how often they have changed
  for (std::uint32_t left = reader.number(4); left > 0; --left) {
    const std::optional<Setting> setting = next(reader);
    if (!setting) return std::nullopt;
    if (setting->name != name) continue;
    if (setting->type != integer) return std::nullopt;
    return static_cast<int>(setting->number);
  }
  return std::nullopt;
}

bool prefersReducedMotion() {
  const auto* native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (!native || !native->connection()) return false;
  return publishedInteger(publishedSettings(native->connection()), "Gtk/EnableAnimations") == 0;
}

}  // namespace velicor::desktop
