#include "program/screen_settings.h"

#include <algorithm>
#include <cstdlib>
#include <string>

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

}  // namespace

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
