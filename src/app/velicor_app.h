#pragma once

namespace velicor {

// The program. run() is its whole life and gives the process's exit code, one of exitStatuses(). Why it can't run,
// or had to end, is said in one line on standard error.
class VelicorApp {
 public:
  int run(int argc, char** argv);
};

}  // namespace velicor
