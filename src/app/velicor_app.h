#pragma once

namespace velicor {

// The program. run() is its whole life and gives the process's exit code:
//   0   ended by the user, or by a signal that asks for it
//   69  there is nothing to run on: no X server, or a session in which other programs' windows can't be read
//   70  the X server went away while it ran
// Why it can't run, or had to end, is said in one line on standard error.
class VelicorApp {
 public:
  int run(int argc, char** argv);
};

}  // namespace velicor
