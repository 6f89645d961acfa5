#pragma once

#include <QColor>
#include <QGradientStops>
#include <QWidget>

#include "palette/palette.h"

namespace velicor {

// A palette colour for painting: the bytes that its hex string names.
QColor colorOf(const Palette::RGB& rgb);

// A small rectangle of one size with continuous corners, filled with a colour or with colours that blend from
// left to right; with a border inside its shape where it is given one. Main thread.
class ColorPatch : public QWidget {
 public:
  ColorPatch(const QSize& size, double radius, QWidget* parent = nullptr);

  // The stops' first colour where there are several.
  QColor color() const { return stops_.isEmpty() ? QColor() : stops_.first().second; }
  void setColor(const QColor& color) { setStops({{0, color}}); }

  const QGradientStops& stops() const { return stops_; }
  void setStops(const QGradientStops& stops);

  struct Border {
    int width = 0;       // points
    double opacity = 0;  // of white
    friend bool operator==(const Border&, const Border&) = default;
  };
  const Border& border() const { return border_; }
  void setBorder(const Border& border);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  const double radius_;
  QGradientStops stops_;
  Border border_;
};

}  // namespace velicor
