#include "update/written_url.h"

#include <algorithm>
#include <utility>

namespace velicor {

namespace {

// Of the C locale, whatever the process's is.
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isPrintable(char c) { return c > ' ' && c <= '~'; }
bool isOfScheme(char c) { return isLetter(c) || isDigit(c) || c == '+' || c == '-' || c == '.'; }

bool isScheme(std::string_view text) {
  return !text.empty() && isLetter(text.front()) && std::ranges::all_of(text, isOfScheme);
}

void appendEncoded(std::string& encoded, char c) {
  static constexpr char digits[] = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  encoded += {'%', digits[byte >> 4], digits[byte & 15]};
}

}  // namespace

std::optional<WrittenUrl> WrittenUrl::parse(std::string_view text) {
  std::string kept(text);
  const QUrl url(QString::fromStdString(kept), QUrl::StrictMode);
  if (kept.empty() || !url.isValid()) return std::nullopt;
  return WrittenUrl(std::move(kept), url);
}

std::optional<std::string> WrittenUrl::scheme() const {
  const std::size_t colon = text_.find(':');
  if (colon == std::string::npos) return std::nullopt;
  std::string scheme = text_.substr(0, colon);
  return isScheme(scheme) ? std::optional(std::move(scheme)) : std::nullopt;
}

std::string WrittenUrl::host() const {
  const auto named = scheme();
  std::string_view rest = text_;
  if (named) rest.remove_prefix(named->size() + 1);
  if (!rest.starts_with("//")) return {};
  rest.remove_prefix(2);
  std::string_view authority = rest.substr(0, rest.find_first_of("/?#\\"));
  // A user may not contain an "@" that is not encoded; should a lenient reader allow it, its last one counts.
  if (const std::size_t at = authority.rfind('@'); at != std::string_view::npos)
    authority.remove_prefix(at + 1);
  const bool literal = authority.starts_with('[');
  const std::size_t end = literal ? authority.find(']') : authority.find(':');
  if (literal) return std::string(authority.substr(1, end == std::string_view::npos ? end : end - 1));
  return std::string(authority.substr(0, end));
}

std::string WrittenUrl::absoluteString() const {
  std::string encoded;
  for (const char c : text_) {
    if (isPrintable(c)) {
      encoded += c;
    } else {
      appendEncoded(encoded, c);
    }
  }
  return encoded;
}

}  // namespace velicor
