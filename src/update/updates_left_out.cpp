// A build without update checks.
#include "update/updates.h"

namespace velicor::updates {

struct Installation::Parts {};

Installation::Installation(settings::Settings&, const desktop::ScreenList&) {}

Installation::~Installation() = default;

bool areIncluded() { return false; }

void checkAtLaunch() {}

void checkNow() {}

}  // namespace velicor::updates
