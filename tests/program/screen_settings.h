#pragma once

#include "support/x_client.h"

namespace velicor::test {

// As the desktop's settings service: what programs are told of the dots per inch. The client that does it first stays
// that service.
void setDotsPerInch(XClient& client, int dots);

// Gives the server's only output another mode, of at most the size that the server began with.
void setResolution(XClient& client, int width, int height);

}  // namespace velicor::test
