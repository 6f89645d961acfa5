#pragma once

#include <QFont>
#include <QWidget>

#include "controls/accessible.h"

namespace velicor::controls {

enum class TextColor { primary, secondary, tertiary, accent, error, success };

QColor colorOf(TextColor color);

enum class Face {
  interface,
  tabular,    // digits that all take the same room
  monospaced  // the desktop's font of that kind
};

struct TextStyle {
  double size = 12;
  QFont::Weight weight = QFont::Normal;
  TextColor color = TextColor::primary;
  double letterSpacing = 0;  // points added after each letter
  Face face = Face::interface;

  QFont font() const;
  friend bool operator==(const TextStyle&, const TextStyle&) = default;
};

enum class TextFit {
  natural,  // its own size, never less
  shrink,   // one line that gets smaller, to three quarters, before its end is left out
  wrap      // as many lines as it needs
};

// Text, as high as its lines. In a button it answers to the mouse as the button does. Main thread.
class Label : public QWidget, public Accessible {
 public:
  explicit Label(const QString& text, const TextStyle& style = {}, TextFit fit = TextFit::natural,
                 QWidget* parent = nullptr);

  const QString& text() const { return text_; }
  void setText(const QString& text);
  const TextStyle& style() const { return style_; }
  void setStyle(const TextStyle& style);
  void setAlignment(Qt::Alignment horizontal);

  // What part of its size the text has where it was to shrink.
  double shrinkage() const;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
  int heightForWidth(int width) const override;

  QAccessible::Role accessibleRole() const override { return QAccessible::StaticText; }
  QString accessibleText() const override { return text_; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QSizeF naturalSize() const;
  void paintLine(QPainter& painter) const;

  QString text_;
  TextStyle style_;
  TextFit fit_;
  Qt::Alignment alignment_ = Qt::AlignLeft;
};

}  // namespace velicor::controls
