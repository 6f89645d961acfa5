#pragma once

#include "scopes/graticule.h"

namespace velicor {

// The scale of the parade: a line and a number at every quarter of the full signal, those at its ends solid. The
// columns of the three channels are the picture's own.
class ParadeGraticule : public Graticule {
 public:
  using Graticule::Graticule;

 protected:
  void draw(QPainter& painter, QSizeF canvas) const override;
};

}  // namespace velicor
