#pragma once

#include <cstdlib>

#include <xcb/randr.h>

#include "support/x_client.h"

namespace velicor::test {

// Monitors without an output come and go silently; a change of the primary output makes the server speak.
inline void announceMonitors(XClient& client, bool primaryOutput) {
  auto* resources = xcb_randr_get_screen_resources_reply(
      client.raw(), xcb_randr_get_screen_resources(client.raw(), client.root()), nullptr);
  const xcb_randr_output_t output = xcb_randr_get_screen_resources_outputs(resources)[0];
  xcb_randr_set_output_primary(client.raw(), client.root(),
                               primaryOutput ? output : xcb_randr_output_t{XCB_NONE});
  std::free(resources);
  client.sync();
}

}  // namespace velicor::test
