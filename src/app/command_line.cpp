#include "app/command_line.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <tl/expected.hpp>

#include "app/options.h"
#include "app/running_version.h"
#include "platform/log/log.h"

namespace velicor {

namespace {

using Arguments = std::span<const char* const>;

template <typename T>
using OrComplaint = tl::expected<T, std::string>;

struct NamedMode {
  std::string_view name;
  Wish wish;
};
constexpr std::array modes{NamedMode{"original", Wish::original}, NamedMode{"skin", Wish::skin},
                           NamedMode{"exposure", Wish::exposure}};

struct Given {
  Option option;
  std::string_view value;
};

constexpr std::size_t lineWidth = 79;
constexpr std::size_t textColumn = 23;

tl::unexpected<std::string> complaint(std::string_view what, std::string_view argument) {
  return tl::unexpected(std::string(what) + " \"" + std::string(argument) + "\"");
}

// The next option with its value, both taken off the arguments.
OrComplaint<Given> take(Arguments& rest) {
  const std::string_view argument = rest.front();
  rest = rest.subspan(1);
  const std::size_t sign = argument.find('=');
  const auto all = options();
  const auto option = std::ranges::find_if(all, [&](const Option& candidate) {
    return argument == candidate.letter || argument.substr(0, sign) == candidate.name;
  });
  const bool hasValue = sign != std::string_view::npos;
  if (argument.empty() || option == all.end() || (hasValue && option->value.empty())) {
    return complaint("unknown argument", argument);
  }
  if (option->value.empty()) return Given{*option, {}};
  if (hasValue) return Given{*option, argument.substr(sign + 1)};
  if (rest.empty()) return complaint("no " + std::string(option->value) + " after", argument);
  const std::string_view value = rest.front();
  rest = rest.subspan(1);
  return Given{*option, value};
}

// The one option, if there is any. What session managers add is for the toolkit.
OrComplaint<std::optional<Given>> readOption(Arguments arguments) {
  std::optional<Given> result;
  while (!arguments.empty()) {
    auto given = take(arguments);
    if (!given) return tl::unexpected(given.error());
    if (given->option.meaning == Option::Meaning::session) continue;
    if (result) return complaint("one option at a time, not also", given->option.name);
    result = *given;
  }
  return result;
}

CommandLine wished(Wish wish) { return {.wish = wish}; }

CommandLine ended(int exitCode) { return {.task = CommandLine::Task::end, .exitCode = exitCode}; }

OrComplaint<CommandLine> inMode(std::string_view name) {
  const auto mode = std::ranges::find(modes, name, &NamedMode::name);
  if (mode == modes.end()) return complaint("unknown mode", name);
  return wished(mode->wish);
}

// The text broken into lines that begin at the column.
std::string wrapped(std::string_view text, std::size_t column) {
  std::string result;
  while (column + text.size() > lineWidth) {
    const std::size_t end = text.rfind(' ', lineWidth - column);
    if (end == std::string_view::npos) break;
    result.append(text.substr(0, end)).append("\n").append(column, ' ');
    text.remove_prefix(end + 1);
  }
  return result.append(text).append("\n");
}

std::string entry(std::string name, std::string_view text) {
  name.resize(std::max(name.size() + 1, textColumn), ' ');
  return name + wrapped(text, textColumn);
}

std::string helpText() {
  std::string text = "Usage: " + std::string(usage()) + "\n\n" + wrapped(std::string(summary()) + ".", 0) +
                     wrapped(description(), 0) + "\nOptions:\n";
  for (const Option& option : options()) {
    const std::string letter = option.letter.empty() ? "      " : "  " + std::string(option.letter) + ", ";
    const std::string value = option.value.empty() ? "" : " " + std::string(option.value);
    text += entry(letter + std::string(option.name) + value, option.text);
  }
  text += "\nEnvironment:\n";
  for (const Variable& variable : variables()) {
    text += entry("  " + std::string(variable.name) + "=" + std::string(variable.value), variable.text);
  }
  return text;
}

OrComplaint<CommandLine> carriedOut(const Given& given) {
  switch (given.option.meaning) {
    case Option::Meaning::toggle: return wished(Wish::toggle);
    case Option::Meaning::mode: return inMode(given.value);
    case Option::Meaning::quit: return wished(Wish::quit);
    case Option::Meaning::diagnose: return CommandLine{.task = CommandLine::Task::diagnose};
    case Option::Meaning::help:
      std::cout << helpText() << std::flush;
      return ended(0);
    case Option::Meaning::version:
      std::cout << product::name << ' ' << runningVersion() << '\n' << std::flush;
      return ended(0);
    case Option::Meaning::session: break;
  }
  return CommandLine{};
}

}  // namespace

CommandLine readCommandLine(int argc, const char* const* argv) {
  const auto count = static_cast<std::size_t>(std::max(argc, 1));
  const auto result = readOption(Arguments(argv, count).subspan(1)).and_then([](const std::optional<Given>& given) {
    return given ? carriedOut(*given) : CommandLine{};
  });
  if (result) return *result;
  log::general(result.error() + "; see velicor --help");
  return ended(exitUsage);
}

}  // namespace velicor
