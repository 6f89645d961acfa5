#include "app/command_line.h"

#include <iostream>
#include <string_view>

#include "app/running_version.h"
#include "platform/log/log.h"

namespace velicor {

namespace {

constexpr std::string_view help =
    "Usage: velicor [--help | --version]\n"
    "\n"
    "Live skin-tone and exposure analysis of anything on the screen. Where it runs\n"
    "already on this display, it comes to the front.\n"
    "\n"
    "  -h, --help     show this help\n"
    "      --version  show the version\n"
    "\n"
    "Environment:\n"
    "  VELICOR_STATS=1      log event counts every second\n"
    "  VELICOR_DUMP=PREFIX  write pictures to PREFIX-NAME.png\n";

}  // namespace

std::optional<int> answerCommandLine(int argc, const char* const* argv) {
  if (argc < 2) return std::nullopt;
  const std::string_view argument = argv[1];
  if (argc == 2 && (argument == "--help" || argument == "-h")) {
    std::cout << help << std::flush;
    return 0;
  }
  if (argc == 2 && argument == "--version") {
    std::cout << product::name << ' ' << runningVersion() << std::endl;
    return 0;
  }
  const bool known = argument == "--help" || argument == "-h" || argument == "--version";
  log::general("unknown argument \"" + std::string(known ? std::string_view(argv[2]) : argument) + "\"; see velicor --help");
  return exitUsage;
}

}  // namespace velicor
