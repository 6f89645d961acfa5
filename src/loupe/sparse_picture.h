#pragma once

#include <utility>
#include <vector>

#include <QImage>
#include <QPoint>

class QPainter;

namespace velicor {

// A picture that is transparent for the most part, such as a frame around a large hole: only the parts with
// something in them are kept and painted. A value; empty as constructed.
class SparsePicture {
 public:
  SparsePicture() = default;
  explicit SparsePicture(const QImage& image);

  // Where the image would be painted if its top-left corner were the painter's origin. The painter's device
  // has the image's device pixel ratio.
  void paint(QPainter& painter) const;

 private:
  std::vector<std::pair<QPoint, QImage>> parts_;  // each at its place in the image's pixels
};

}  // namespace velicor
