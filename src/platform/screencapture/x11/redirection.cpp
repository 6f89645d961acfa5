#include "platform/screencapture/x11/redirection.h"

#include <xcb/composite.h>

#include "platform/screencapture/screen_capture.h"

namespace velicor::screencapture {

std::optional<Error> redirectWindows(x11::Connection& connection) {
  const x11::Extensions& all = connection.extensions();
  const bool complete = all.composite.atLeast(0, 2) && all.damage.present && all.fixes.atLeast(2, 0) &&
                        all.render.atLeast(0, 10);
  if (!complete) {
    // A client that the server does not trust is told that there are no such extensions, and may not read.
    const auto pixel = connection.reply(
        xcb_get_image_reply,
        xcb_get_image(connection.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, connection.root(), 0, 0, 1, 1, ~0U));
    if (!pixel) {
      return Error{std::string(errorDomain), userDeclined,
                   "The X server does not let this program read the screen"};
    }
    return Error{std::string(errorDomain), serverRefused,
                 "The X server lacks an extension that is needed (Composite, Damage, XFixes, Render)"};
  }
  const Status redirected = connection.check(xcb_composite_redirect_subwindows_checked(
      connection.raw(), connection.root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC));
  if (redirected) return std::nullopt;
  const int code = redirected.error().code == XCB_ACCESS ? userDeclined : serverRefused;
  return Error{std::string(errorDomain), code,
               "The X server does not let this program read windows: " + redirected.error().description};
}

bool isRedirected(x11::Connection& connection, std::uint32_t window) {
  const std::uint32_t pixmap = connection.newId();
  if (!connection.check(xcb_composite_name_window_pixmap_checked(connection.raw(), window, pixmap)))
    return false;
  xcb_free_pixmap(connection.raw(), pixmap);
  return true;
}

}  // namespace velicor::screencapture
