#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <QUrl>

namespace velicor {

// A URL that keeps the text it was read from. The network library's own class tidies what it reads (it
// lower-cases schemes and hosts, decodes and maps characters), so whoever has to judge the text as it stands
// looks at scheme() and host() here, and at url() for where a connection would really go.
class WrittenUrl {
 public:
  // None for text that is not a valid URL. Relative references are valid; they have no scheme.
  static std::optional<WrittenUrl> parse(std::string_view text);

  // What is before the first colon; none where that is no scheme.
  std::optional<std::string> scheme() const;

  // Without user and port; empty where there is none.
  std::string host() const;

  // The text, with everything but printable ASCII percent-encoded.
  std::string absoluteString() const;

  const QUrl& url() const { return url_; }

  friend bool operator==(const WrittenUrl& a, const WrittenUrl& b) { return a.text_ == b.text_; }

 private:
  WrittenUrl(std::string text, QUrl url) : text_(std::move(text)), url_(std::move(url)) {}

  std::string text_;
  QUrl url_;
};

}  // namespace velicor
