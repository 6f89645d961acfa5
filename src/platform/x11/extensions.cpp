#include "platform/x11/extensions.h"

#include <string_view>

#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/render.h>
#include <xcb/res.h>
#include <xcb/shape.h>
#include <xcb/shm.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

#include "platform/x11/owned.h"

namespace velicor::x11 {

namespace {

Extension announced(xcb_connection_t* connection, xcb_extension_t& id) {
  const xcb_query_extension_reply_t* data = xcb_get_extension_data(connection, &id);
  if (!data || !data->present) return {};
  return {true, data->major_opcode, data->first_event, data->first_error, 0, 0};
}

// An extension whose version can't be had is treated as missing: its requests would be refused.
template <typename Reply, typename Cookie>
void agree(xcb_connection_t* connection, Extension& extension, Cookie cookie,
           Reply* (*fetch)(xcb_connection_t*, Cookie, xcb_generic_error_t**)) {
  xcb_generic_error_t* error = nullptr;
  const Owned<Reply> reply(fetch(connection, cookie, &error));
  const Owned<xcb_generic_error_t> ownedError(error);
  if (!reply) {
    extension = {};
    return;
  }
  extension.majorVersion = static_cast<std::uint32_t>(reply->major_version);
  extension.minorVersion = static_cast<std::uint32_t>(reply->minor_version);
}

void agreeResource(xcb_connection_t* connection, Extension& extension,
                   xcb_res_query_version_cookie_t cookie) {
  xcb_generic_error_t* error = nullptr;
  const Owned<xcb_res_query_version_reply_t> reply(xcb_res_query_version_reply(connection, cookie, &error));
  const Owned<xcb_generic_error_t> ownedError(error);
  if (!reply) {
    extension = {};
    return;
  }
  extension.majorVersion = reply->server_major;
  extension.minorVersion = reply->server_minor;
}

bool hasExtension(xcb_connection_t* connection, xcb_query_extension_cookie_t cookie) {
  const Owned<xcb_query_extension_reply_t> reply(xcb_query_extension_reply(connection, cookie, nullptr));
  return reply && reply->present != 0;
}

void agreeOnVersions(xcb_connection_t* c, Extensions& all) {
  // Requests of an extension that is not there would end the connection, hence the conditions.
  xcb_composite_query_version_cookie_t composite{};
  xcb_damage_query_version_cookie_t damage{};
  xcb_xfixes_query_version_cookie_t fixes{};
  xcb_input_xi_query_version_cookie_t input{};
  xcb_randr_query_version_cookie_t randr{};
  xcb_render_query_version_cookie_t render{};
  xcb_res_query_version_cookie_t resource{};
  xcb_shape_query_version_cookie_t shape{};
  xcb_shm_query_version_cookie_t shm{};
  if (all.composite.present) composite = xcb_composite_query_version(c, 0, 4);
  if (all.damage.present) damage = xcb_damage_query_version(c, 1, 1);
  if (all.fixes.present) fixes = xcb_xfixes_query_version(c, 5, 0);
  if (all.input.present) input = xcb_input_xi_query_version(c, 2, 2);
  if (all.randr.present) randr = xcb_randr_query_version(c, 1, 5);
  if (all.render.present) render = xcb_render_query_version(c, 0, 11);
  if (all.resource.present) resource = xcb_res_query_version(c, 1, 2);
  if (all.shape.present) shape = xcb_shape_query_version(c);
  if (all.shm.present) shm = xcb_shm_query_version(c);
  if (all.composite.present) agree(c, all.composite, composite, xcb_composite_query_version_reply);
  if (all.damage.present) agree(c, all.damage, damage, xcb_damage_query_version_reply);
  if (all.fixes.present) agree(c, all.fixes, fixes, xcb_xfixes_query_version_reply);
  if (all.input.present) agree(c, all.input, input, xcb_input_xi_query_version_reply);
  if (all.randr.present) agree(c, all.randr, randr, xcb_randr_query_version_reply);
  if (all.render.present) agree(c, all.render, render, xcb_render_query_version_reply);
  if (all.resource.present) agreeResource(c, all.resource, resource);
  if (all.shape.present) agree(c, all.shape, shape, xcb_shape_query_version_reply);
  if (all.shm.present) agree(c, all.shm, shm, xcb_shm_query_version_reply);
}

}  // namespace

Extensions negotiateExtensions(xcb_connection_t* connection) {
  xcb_extension_t* const ids[] = {&xcb_composite_id, &xcb_damage_id, &xcb_xfixes_id,
                                  &xcb_input_id,     &xcb_randr_id,  &xcb_render_id,
                                  &xcb_res_id,       &xcb_shape_id,  &xcb_shm_id};
  for (xcb_extension_t* id : ids)
    xcb_prefetch_extension_data(connection, id);
  constexpr std::string_view bridge = "XWAYLAND";
  const auto bridgeCookie =
      xcb_query_extension(connection, static_cast<std::uint16_t>(bridge.size()), bridge.data());

  Extensions all;
  all.composite = announced(connection, xcb_composite_id);
  all.damage = announced(connection, xcb_damage_id);
  all.fixes = announced(connection, xcb_xfixes_id);
  all.input = announced(connection, xcb_input_id);
  all.randr = announced(connection, xcb_randr_id);
  all.render = announced(connection, xcb_render_id);
  all.resource = announced(connection, xcb_res_id);
  all.shape = announced(connection, xcb_shape_id);
  all.shm = announced(connection, xcb_shm_id);
  all.xwayland = hasExtension(connection, bridgeCookie);
  agreeOnVersions(connection, all);
  return all;
}

}  // namespace velicor::x11
