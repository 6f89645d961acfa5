#pragma once

#include <optional>

namespace velicor {

// The exit status after options that don't exist (EX_USAGE).
inline constexpr int exitUsage = 64;

// Answers --help and --version on standard output; says in one line on standard error which argument is unknown.
// The exit code where the program ends with that, none where it is to run. Needs no display.
std::optional<int> answerCommandLine(int argc, const char* const* argv);

}  // namespace velicor
