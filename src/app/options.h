#pragma once

#include <span>
#include <string_view>

// What can be said to the program when it is started, and what it says when it ends: the tables from which the
// command line is read and from which --help and the manual page are written. Plain data; any thread.
namespace velicor {

// The exit status after options that don't exist (EX_USAGE).
inline constexpr int exitUsage = 64;

struct Option {
  enum class Meaning { toggle, mode, quit, diagnose, help, version, session };
  Meaning meaning;
  std::string_view name;    // "--mode"
  std::string_view letter;  // "-h"; empty: it has none
  std::string_view value;   // what its value is called, "MODE"; empty: it takes none
  std::string_view text;
};

// An environment variable that the program itself reads.
struct Variable {
  std::string_view name;
  std::string_view value;
  std::string_view text;
};

struct ExitStatus {
  int code = 0;
  std::string_view text;
};

// In the order of the texts.
std::span<const Option> options();
std::span<const Variable> variables();
std::span<const ExitStatus> exitStatuses();

// One sentence, without its full stop, and what the options do as a whole.
std::string_view summary();
std::string_view usage();
std::string_view description();

}  // namespace velicor
