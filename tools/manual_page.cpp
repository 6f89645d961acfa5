// Writes the manual page, from the tables that the command line is read by, on standard output.
#include <cctype>
#include <iostream>
#include <string>
#include <string_view>

#include "app/gestures.h"
#include "app/options.h"
#include "app/running_version.h"

namespace {

using namespace velicor;

// As plain text: hyphens are those of options, nothing is a request, and all is ASCII, which every formatter reads.
std::string escaped(std::string_view text) {
  constexpr std::string_view times = "×";
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text.substr(i).starts_with(times)) {
      result += "\\(mu";
      i += times.size() - 1;
      continue;
    }
    if (text[i] == '-') result += '\\';
    result += text[i] == '\\' ? "\\e" : std::string(1, text[i]);
  }
  return result;
}

std::string bold(std::string_view text) { return "\\fB" + escaped(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + escaped(text) + "\\fR"; }

// Paragraphs must not begin with what the formatter takes for a request.
std::string line(const std::string& text) { return (text.starts_with('.') ? "\\&" : "") + text + "\n"; }

std::string section(std::string_view title) { return ".SH " + std::string(title) + "\n"; }

// A phrase of the tables becomes a sentence.
std::string entry(const std::string& tag, std::string_view text) {
  std::string sentence = escaped(text) + ".";
  sentence.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(sentence.front())));
  return ".TP\n" + line(tag) + line(sentence);
}

std::string optionEntry(const Option& option) {
  std::string tag = option.letter.empty() ? "" : bold(option.letter) + ", ";
  tag += bold(option.name);
  if (!option.value.empty()) tag += " " + italic(option.value);
  return entry(tag, option.text);
}

std::string page() {
  std::string text = ".TH VELICOR 1 \"\" \"" + std::string(product::name) + " " + runningVersion() + "\"\n";
  text += section("NAME") + line("velicor \\- " + escaped(summary()));
  text += section("SYNOPSIS") + line(bold("velicor") + " [" + italic("OPTION") + "]");
  text += section("DESCRIPTION") + line(escaped(description()));
  text += section("OPTIONS");
  for (const Option& option : options()) text += optionEntry(option);
  text += section("KEYS AND MOUSE");
  for (const GestureGroup& group : gestureGroups()) {
    text += ".SS " + line(escaped(group.place));
    for (const Gesture& gesture : group.gestures) text += entry(bold(gesture.how), gesture.what);
  }
  text += section("ENVIRONMENT");
  for (const Variable& variable : variables()) {
    text += entry(bold(variable.name) + "=" + italic(variable.value), variable.text);
  }
  text += section("FILES") + entry(italic("~/.config/velicor/settings.json"), "the settings, written by the program");
  text += section("EXIT STATUS");
  for (const ExitStatus& status : exitStatuses()) text += entry(bold(std::to_string(status.code)), status.text);
  return text;
}

}  // namespace

int main() { std::cout << page() << std::flush; }
