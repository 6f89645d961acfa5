#pragma once

#include <QString>

#include "analysis/metal_processor.h"

namespace velicor {

// What menus call a mode.
inline QString titleOf(MetalProcessor::Mode mode) {
  switch (mode) {
    case MetalProcessor::Mode::original:
      return QStringLiteral("Original");
    case MetalProcessor::Mode::skin:
      return QStringLiteral("Skin Indicator");
    case MetalProcessor::Mode::exposure:
      break;
  }
  return QStringLiteral("Exposure Heatmap");
}

}  // namespace velicor
