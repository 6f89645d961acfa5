#pragma once

#include <array>

#include "scopes/graticule.h"

namespace velicor {

// The scale of the vectorscope: rings at quarters of the full chroma, a crosshair, the skin-tone line, and a labelled
// box where each primary and secondary colour of 75 % falls. Rings stay round in a view that is not square; all else
// stretches with it.
class VectorscopeGraticule : public Graticule {
 public:
  using Graticule::Graticule;

  // A colour's place in the plane of Cb and Cr, −0.5…0.5 each.
  struct Target {
    const char* label;
    double cb;
    double cr;
  };

  // Made at the first call, from the colours themselves; any thread.
  static const std::array<Target, 6>& targets();

 protected:
  void draw(QPainter& painter, QSizeF canvas) const override;
};

}  // namespace velicor
