#pragma once

#include <cstdint>

namespace velicor {

// What a start of the program is to do, itself or by the one that runs already, to which it goes as its number.
enum class Wish : std::uint32_t { show, toggle, original, skin, exposure, quit };

struct CommandLine {
  enum class Task { run, diagnose, end };
  Task task = Task::run;
  Wish wish = Wish::show;  // of a task to run
  int exitCode = 0;        // of a task to end
};

// Answers --help and --version on standard output; says in one line on standard error what is wrong with the
// arguments. Needs no display.
CommandLine readCommandLine(int argc, const char* const* argv);

}  // namespace velicor
