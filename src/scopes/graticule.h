#pragma once

#include <QImage>
#include <QPointF>
#include <QSizeF>
#include <QString>
#include <QWidget>

class QPainter;

namespace velicor {

// A scale drawn over a live picture: transparent where it draws nothing, and passed by by the mouse. It depends on
// its size alone, and is drawn again only when that changes, however often the picture below does. Main thread.
class Graticule : public QWidget {
 public:
  explicit Graticule(QWidget* parent = nullptr);

  // Continuous corners to which it is clipped, in points; 0 for none.
  void setCornerRadius(double radius);

 protected:
  // The canvas in points, its origin at the top left and y down. May be empty.
  virtual void draw(QPainter& painter, QSizeF canvas) const = 0;

  void paintEvent(QPaintEvent* event) override;

 private:
  QImage drawn(QSize pixels) const;

  double cornerRadius_ = 0;
  QImage drawing_;
};

namespace graticule {

// Where the middle of a horizontal or vertical line goes so that it covers whole device pixels, next to `position`
// and inside 0…`extent`. Points.
double onPixels(const QPainter& painter, double position, double width, double extent);

// A small grey label around that point, its baseline on a row of device pixels.
void drawLabel(QPainter& painter, QPointF centre, const QString& text);

}  // namespace graticule
}  // namespace velicor
