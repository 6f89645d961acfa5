#include "controls/label.h"

#include <algorithm>
#include <cmath>

#include <QFontMetricsF>
#include <QPainter>

#include "controls/control.h"
#include "platform/desktop/look.h"
#include "platform/desktop/typeface.h"

namespace velicor::controls {

namespace {

constexpr double smallestShrinkage = 0.75;

int wrapFlags(Qt::Alignment alignment) { return Qt::TextWordWrap | static_cast<int>(alignment); }

}  // namespace

QColor colorOf(TextColor color) {
  switch (color) {
    case TextColor::primary:
      return look::primaryText;
    case TextColor::secondary:
      return look::secondaryText;
    case TextColor::tertiary:
      return look::tertiaryText;
    case TextColor::error:
      return look::errorText;
    case TextColor::success:
      return look::successText;
    case TextColor::accent:
      break;
  }
  return look::accent;
}

QFont TextStyle::font() const {
  QFont font = face == Face::monospaced ? desktop::monospacedFont(size) : desktop::interfaceFont(size, weight);
  if (letterSpacing != 0) font.setLetterSpacing(QFont::AbsoluteSpacing, letterSpacing);
  return font;
}

Label::Label(const QString& text, const TextStyle& style, TextFit fit, QWidget* parent)
    : QWidget(parent), text_(text), style_(style), fit_(fit) {
  QSizePolicy policy(fit == TextFit::natural ? QSizePolicy::Minimum : QSizePolicy::Preferred,
                     fit == TextFit::wrap ? QSizePolicy::Preferred : QSizePolicy::Fixed);
  policy.setHeightForWidth(fit == TextFit::wrap);
  setSizePolicy(policy);
}

void Label::setText(const QString& text) {
  if (text == text_) return;
  text_ = text;
  updateGeometry();
  update();
}

void Label::setStyle(const TextStyle& style) {
  if (style == style_) return;
  style_ = style;
  updateGeometry();
  update();
}

void Label::setAlignment(Qt::Alignment horizontal) {
  alignment_ = horizontal;
  update();
}

QSizeF Label::naturalSize() const {
  const QFont font = style_.font();
  if (style_.face == Face::tabular) return desktop::tabularSize(font, text_);
  const QFontMetricsF metrics(font);
  return {metrics.horizontalAdvance(text_), metrics.height()};
}

double Label::shrinkage() const {
  const double natural = naturalSize().width();
  if (fit_ != TextFit::shrink || natural <= width()) return 1;
  return std::max(smallestShrinkage, width() / natural);
}

QSize Label::sizeHint() const {
  const QSizeF natural = naturalSize();
  return {static_cast<int>(std::ceil(natural.width())), static_cast<int>(std::ceil(natural.height()))};
}

QSize Label::minimumSizeHint() const {
  const QSize natural = sizeHint();
  return fit_ == TextFit::natural ? natural : QSize(std::min(natural.width(), natural.height()), natural.height());
}

int Label::heightForWidth(int width) const {
  if (fit_ != TextFit::wrap) return -1;
  const QRectF room(0, 0, width, QWIDGETSIZE_MAX);
  const QRectF taken = QFontMetricsF(style_.font()).boundingRect(room, wrapFlags(alignment_), text_);
  return static_cast<int>(std::ceil(taken.height()));
}

void Label::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setFont(style_.font());
  painter.setPen(touched(colorOf(style_.color), Control::touchOf(*this)));
  if (fit_ == TextFit::wrap) {
    painter.drawText(rect(), wrapFlags(alignment_), text_);
  } else {
    paintLine(painter);
  }
}

void Label::paintLine(QPainter& painter) const {
  const double shrunk = shrinkage();
  const QFontMetricsF metrics(painter.font());
  const double room = width() / shrunk;
  const QSizeF natural = naturalSize();
  const QString shown = natural.width() <= std::ceil(room) ? text_ : metrics.elidedText(text_, Qt::ElideRight, room);
  const double spare = std::max(0.0, room - (shown == text_ ? natural.width() : room));
  double left = 0;
  if (alignment_.testFlag(Qt::AlignRight)) left = spare;
  if (alignment_.testFlag(Qt::AlignHCenter)) left = spare / 2;
  const double top = (height() / shrunk - natural.height()) / 2;
  painter.scale(shrunk, shrunk);
  if (style_.face == Face::tabular)
    return desktop::drawTabular(painter, QPointF(left, top), painter.font(), shown);
  // A baseline between two rows of pixels would blur every letter.
  const double unit = painter.device()->devicePixelRatio() * shrunk;
  painter.drawText(QPointF(left, std::round((top + metrics.ascent()) * unit) / unit), shown);
}

}  // namespace velicor::controls
