#include "platform/screencapture/x11/error_journal.h"

#include "platform/log/log.h"

namespace velicor::screencapture {

namespace {

// Errors that come with windows vanishing under our hands: each request for one that is gone fails, and so do
// those that built on it. Nothing is lost by them.
bool isBenign(const x11::Extensions& all, const xcb_generic_error_t& error) {
  switch (error.error_code) {
    case XCB_WINDOW:
    case XCB_PIXMAP:
    case XCB_DRAWABLE:
      return true;
    case XCB_MATCH:
      return error.major_code == all.composite.majorOpcode || error.major_code == all.render.majorOpcode;
    default:
      return error.error_code == all.damage.firstError || error.error_code == all.fixes.firstError ||
             error.error_code == all.render.firstError + 1;  // no such damage, region or picture
  }
}

}  // namespace

void ErrorJournal::take(const x11::Connection& connection, const xcb_generic_error_t& error) {
  if (isBenign(connection.extensions(), error)) return;
  if (!reported_.emplace(error.error_code, error.major_code, error.minor_code).second) return;
  log::Logger("x11").error("unexpected " + connection.describe(error));
}

}  // namespace velicor::screencapture
