#include "program/screen_settings.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include <xcb/randr.h>

#include "platform/x11/owned.h"

namespace velicor::test {

namespace {

using x11::Owned;

constexpr int millimetresAcross = 300;

// Only the server's emulation of an output takes a mode that says nothing of time.
xcb_randr_mode_t makeMode(const XClient& client, xcb_randr_output_t output, xcb_randr_mode_info_t mode) {
  const std::string name = std::to_string(mode.width) + "x" + std::to_string(mode.height);
  mode.name_len = static_cast<std::uint16_t>(name.size());
  const Owned<xcb_randr_create_mode_reply_t> made(xcb_randr_create_mode_reply(
      client.raw(),
      xcb_randr_create_mode(client.raw(), client.root(), mode, static_cast<std::uint32_t>(name.size()),
                            name.c_str()),
      nullptr));
  xcb_randr_add_output_mode(client.raw(), output, made->mode);
  return made->mode;
}

xcb_window_t ownerOf(const XClient& client, std::string_view selection) {
  const Owned<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
      client.raw(), xcb_get_selection_owner(client.raw(), client.atom(selection)), nullptr));
  return reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
}

struct SettingsHeader {
  std::uint8_t byteOrder;
  std::array<std::uint8_t, 3> unused;
  std::uint32_t serial;
  std::uint32_t count;
};

struct NumberSetting {
  std::uint8_t type;
  std::uint8_t unused;
  std::uint16_t nameLength;
  std::array<char, 8> name;
  std::uint32_t serial;
  std::int32_t value;
};

struct Settings {
  SettingsHeader header;
  NumberSetting dots;
};

}  // namespace

void setDotsPerInch(XClient& client, int dots) {
  constexpr std::string_view service = "_XSETTINGS_S0";
  constexpr std::uint8_t lowestByteFirst = 0;
  static_assert(std::endian::native == std::endian::little);
  if (ownerOf(client, service) == XCB_WINDOW_NONE) client.takeSelection(service);
  static std::uint32_t serial = 0;  // what has no higher one is no news
  ++serial;
  const Settings settings{{lowestByteFirst, {}, serial, 1},
                          {0, 0, 7, {'X', 'f', 't', '/', 'D', 'P', 'I'}, serial, dots * 1024}};
  const xcb_atom_t property = client.atom("_XSETTINGS_SETTINGS");
  xcb_change_property(client.raw(), XCB_PROP_MODE_REPLACE, ownerOf(client, service), property, property, 8, sizeof settings,
                      &settings);
  client.sync();
}

void setResolution(XClient& client, int width, int height) {
  xcb_connection_t* raw = client.raw();
  std::free(xcb_randr_query_version_reply(raw, xcb_randr_query_version(raw, 1, 5), nullptr));
  const Owned<xcb_randr_get_screen_resources_reply_t> resources(
      xcb_randr_get_screen_resources_reply(raw, xcb_randr_get_screen_resources(raw, client.root()), nullptr));
  xcb_randr_output_t output = xcb_randr_get_screen_resources_outputs(resources.get())[0];
  const xcb_randr_crtc_t crtc = xcb_randr_get_screen_resources_crtcs(resources.get())[0];
  xcb_randr_mode_info_t mode{};
  mode.width = static_cast<std::uint16_t>(width);
  mode.height = static_cast<std::uint16_t>(height);
  const auto* first = xcb_randr_get_screen_resources_modes(resources.get());
  const auto* last = first + xcb_randr_get_screen_resources_modes_length(resources.get());
  const auto* known = std::find_if(
      first, last, [&](const auto& each) { return each.width == mode.width && each.height == mode.height; });
  const xcb_randr_mode_t wanted = known != last ? known->id : makeMode(client, output, mode);
  // In the order of any tool for this: off, the screen, on.
  const auto show = [&](xcb_randr_mode_t shown, std::uint32_t outputs) {
    std::free(xcb_randr_set_crtc_config_reply(
        raw,
        xcb_randr_set_crtc_config(raw, crtc, XCB_CURRENT_TIME, XCB_CURRENT_TIME, 0, 0, shown,
                                  XCB_RANDR_ROTATION_ROTATE_0, outputs, &output),
        nullptr));
  };
  show(XCB_NONE, 0);
  xcb_randr_set_screen_size(raw, client.root(), mode.width, mode.height, millimetresAcross,
                            static_cast<std::uint32_t>(millimetresAcross * height / width));
  show(wanted, 1);
}

}  // namespace velicor::test
