#pragma once

#include <string>
#include <string_view>

namespace velicor {

// Text from outside, fit for a line of the log: what is not printable becomes "?", and of a very long text
// only the beginning is kept.
std::string logText(std::string_view text);

}  // namespace velicor
