#pragma once

#include <chrono>
#include <functional>

namespace velicor::test {

// Runs the event loop until the condition holds; false when it still does not after the time given, which is
// more than anything takes on a machine that does much else.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = std::chrono::seconds(60));

// Runs everything that is due now on the main queue and in the event loop, and what that adds, until nothing
// is left.
void settle();

}  // namespace velicor::test
