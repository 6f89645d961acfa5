#pragma once

#include "support/x_client.h"

namespace velicor::test {

// Gives the server's only output another mode, of at most the size that the server began with.
void setResolution(XClient& client, int width, int height);

}  // namespace velicor::test
