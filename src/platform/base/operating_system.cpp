#include "platform/base/operating_system.h"

#include <array>
#include <charconv>
#include <fstream>
#include <iterator>

namespace velicor {

namespace {

// Takes the text before the separator off the front; all of it where there is none.
std::string_view takeUntil(std::string_view& rest, char separator) {
  const std::size_t end = rest.find(separator);
  const std::string_view piece = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return piece;
}

std::string unquoted(std::string_view value) {
  const bool quoted = value.size() >= 2 && (value.front() == '"' || value.front() == '\'');
  if (!quoted || value.back() != value.front()) return std::string(value);
  const bool escapes = value.front() == '"';
  value = value.substr(1, value.size() - 2);
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (escapes && value[i] == '\\' && i + 1 < value.size()) ++i;
    text += value[i];
  }
  return text;
}

std::string readFile(const char* path) {
  std::ifstream stream(path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace

std::optional<std::int64_t> wholeNumber(std::string_view text) {
  const bool plus = text.starts_with('+');
  if (plus) text.remove_prefix(1);
  if (plus && text.starts_with('-')) return std::nullopt;
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

SystemVersion dottedVersion(std::string_view text) {
  std::array<std::int64_t, 3> numbers{};
  std::size_t count = 0;
  while (!text.empty() && count < numbers.size()) {
    const std::string_view piece = takeUntil(text, '.');
    if (!piece.empty()) numbers[count++] = wholeNumber(piece).value_or(0);
  }
  return {numbers[0], numbers[1], numbers[2]};
}

OperatingSystem parseOsRelease(std::string_view content) {
  OperatingSystem system;
  while (!content.empty()) {
    std::string_view line = takeUntil(content, '\n');
    const std::string_view key = takeUntil(line, '=');
    const std::string value = unquoted(line);
    if (value.empty()) continue;
    if (key == "PRETTY_NAME") system.name = value;
    const bool numbered = value.front() >= '0' && value.front() <= '9';
    if (key == "VERSION_ID" && numbered) system.version = dottedVersion(value);
  }
  return system;
}

const OperatingSystem& operatingSystem() {
  static const OperatingSystem running = [] {
    const std::string content = readFile("/etc/os-release");
    return parseOsRelease(content.empty() ? readFile("/usr/lib/os-release") : content);
  }();
  return running;
}

}  // namespace velicor
