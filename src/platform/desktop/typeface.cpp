#include "platform/desktop/typeface.h"

#include <algorithm>

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>

#include "platform/base/geometry.h"

namespace velicor::desktop {

namespace {

double widestDigit(const QFontMetricsF& metrics) {
  double widest = 0;
  for (char digit = '0'; digit <= '9'; ++digit) {
    widest = std::max(widest, metrics.horizontalAdvance(QChar::fromLatin1(digit)));
  }
  return widest;
}

double advanceOf(const QFontMetricsF& metrics, QChar character, double digitWidth) {
  return character.isDigit() ? digitWidth : metrics.horizontalAdvance(character);
}

}  // namespace

QFont interfaceFont(double size, QFont::Weight weight) {
  QFont font(QStringLiteral("Inter"));
  font.setPixelSize(std::max(1, static_cast<int>(size)));
  font.setWeight(weight);
  return font;
}

QFont monospacedFont(double size) {
  QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  font.setPixelSize(std::max(1, static_cast<int>(size)));
  return font;
}

QSizeF tabularSize(const QFont& font, const QString& text) {
  const QFontMetricsF metrics(font);
  const double digitWidth = widestDigit(metrics);
  double width = 0;
  for (const QChar character : text)
    width += advanceOf(metrics, character, digitWidth);
  return {width, metrics.height()};
}

void drawTabular(QPainter& painter, QPointF topLeft, const QFont& font, const QString& text) {
  const QFontMetricsF metrics(font);
  const double digitWidth = widestDigit(metrics);
  painter.setFont(font);
  // A baseline between two rows of pixels would blur every letter.
  const double scale = painter.device()->devicePixelRatio();
  QPointF pen(topLeft.x(), roundHalfAway((topLeft.y() + metrics.ascent()) * scale) / scale);
  for (const QChar character : text) {
    const double advance = advanceOf(metrics, character, digitWidth);
    const double inset = (advance - metrics.horizontalAdvance(character)) * 0.5;
    painter.drawText(QPointF(pen.x() + inset, pen.y()), QString(character));
    pen.rx() += advance;
  }
}

}  // namespace velicor::desktop
