#include "update/log_text.h"

#include <algorithm>

#include <QList>
#include <QString>

namespace velicor {

namespace {

constexpr qsizetype longest = 2000;

}  // namespace

std::string logText(std::string_view text) {
  const QList<uint> characters = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toUcs4();
  QString printable;
  for (const char32_t c : characters.first(std::min(longest, characters.size()))) {
    printable += QChar::isPrint(c) ? QString::fromUcs4(&c, 1) : QString("?");
  }
  if (characters.size() > longest) printable += "…";
  return printable.toStdString();
}

}  // namespace velicor
