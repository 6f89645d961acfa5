#include "update/readable.h"

#include <algorithm>

namespace velicor {

namespace {

constexpr qsizetype longestWord = 24;
constexpr std::ptrdiff_t mostNotes = 100;

constexpr QChar breakHere(0x200B);  // a space without width

}  // namespace

QString readable(const std::string& text, qsizetype longest) {
  const QString all = QString::fromStdString(text);
  QString shown;
  qsizetype word = 0;
  for (const QChar c : all.first(std::min(longest, all.size()))) {
    word = c.isSpace() ? 0 : word + 1;
    // Never between the two halves of a character, nor before an accent.
    if (word > longestWord && !c.isLowSurrogate() && !c.isMark()) {
      shown += breakHere;
      word = 1;
    }
    shown += c;
  }
  if (all.size() > longest) shown += "…";
  return shown;
}

std::vector<std::string> readableNotes(const std::vector<std::string>& notes) {
  const auto count = std::min(mostNotes, std::ssize(notes));
  std::vector<std::string> shown(notes.begin(), notes.begin() + count);
  if (std::ssize(notes) > count) shown.emplace_back("…");
  return shown;
}

}  // namespace velicor
