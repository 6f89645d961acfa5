#include "platform/screencapture/x11/visual_formats.h"

#include <xcb/render.h>

#include "platform/screencapture/screen_capture.h"

namespace velicor::screencapture {

namespace {

bool hasPlainChannels(const xcb_render_pictforminfo_t& format) {
  const xcb_render_directformat_t& d = format.direct;
  return format.type == XCB_RENDER_PICT_TYPE_DIRECT && d.red_shift == 16 && d.red_mask == 0xff &&
         d.green_shift == 8 && d.green_mask == 0xff && d.blue_shift == 0 && d.blue_mask == 0xff;
}

bool isBgra(const xcb_render_pictforminfo_t& format) {
  return format.depth == 32 && hasPlainChannels(format) && format.direct.alpha_shift == 24 &&
         format.direct.alpha_mask == 0xff;
}

// Whether pixels of this depth come as 32-bit words.
bool isWordDepth(const xcb_setup_t* setup, int depth) {
  const xcb_format_t* formats = xcb_setup_pixmap_formats(setup);
  for (int i = 0; i < xcb_setup_pixmap_formats_length(setup); ++i) {
    if (formats[i].depth == depth) return formats[i].bits_per_pixel == 32 && formats[i].scanline_pad == 32;
  }
  return false;
}

using FormatInfo = std::map<xcb_render_pictformat_t, const xcb_render_pictforminfo_t*>;

FormatInfo formatsById(const xcb_render_query_pict_formats_reply_t& reply) {
  FormatInfo infos;
  const xcb_render_pictforminfo_t* all = xcb_render_query_pict_formats_formats(&reply);
  for (int i = 0; i < xcb_render_query_pict_formats_formats_length(&reply); ++i)
    infos[all[i].id] = &all[i];
  return infos;
}

template <typename Take>
void eachVisual(const xcb_render_query_pict_formats_reply_t& reply, Take take) {
  auto screens = xcb_render_query_pict_formats_screens_iterator(&reply);
  for (; screens.rem > 0; xcb_render_pictscreen_next(&screens)) {
    auto depths = xcb_render_pictscreen_depths_iterator(screens.data);
    for (; depths.rem > 0; xcb_render_pictdepth_next(&depths)) {
      auto visuals = xcb_render_pictdepth_visuals_iterator(depths.data);
      for (; visuals.rem > 0; xcb_render_pictvisual_next(&visuals))
        take(*visuals.data);
    }
  }
}

tl::unexpected<Error> unsupported(std::string_view why) {
  return failure(errorDomain, unsupportedScreen, why);
}

}  // namespace

Result<VisualFormats> VisualFormats::read(x11::Connection& connection) {
  const xcb_setup_t* setup = xcb_get_setup(connection.raw());
  if (setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST || !isWordDepth(setup, 32)) {
    return unsupported("The X server's byte order of pixels is not supported");
  }
  const auto reply =
      connection.reply(xcb_render_query_pict_formats_reply, xcb_render_query_pict_formats(connection.raw()));
  if (!reply) return tl::make_unexpected(reply.error());

  VisualFormats result;
  const FormatInfo infos = formatsById(**reply);
  for (const auto& [id, info] : infos) {
    if (isBgra(*info)) result.bgra_ = id;
  }
  eachVisual(**reply, [&](const xcb_render_pictvisual_t& visual) {
    const auto info = infos.find(visual.format);
    if (info == infos.end()) return;
    const int depth = info->second->depth;
    const bool plain = hasPlainChannels(*info->second) && isWordDepth(setup, depth);
    result.formats_[visual.visual] = {visual.format, depth, info->second->direct.alpha_mask != 0, plain};
  });
  if (result.bgra_ == 0) return unsupported("The X server can't convert pixels to 32 bits");
  if (!result.find(connection.screen().root_visual)) {
    return unsupported("The screen's pixel layout (depth " + std::to_string(connection.screen().root_depth) +
                       ") is not supported");
  }
  return result;
}

const VisualFormat* VisualFormats::find(std::uint32_t visual) const {
  const auto entry = formats_.find(visual);
  return entry == formats_.end() ? nullptr : &entry->second;
}

}  // namespace velicor::screencapture
