#pragma once

#include <algorithm>

// The decisions about single pixels, as shared/pixel_formulas.inc has them for all devices.
namespace velicor::color {

static_assert(sizeof(int) == 4);

using std::max;
using std::min;

// GLSL's word for arithmetic that is done as it is written. Here all of it is: the build allows no
// contraction.
#define precise
#include "analysis/kernels/shared/pixel_formulas.inc"
#undef precise

}  // namespace velicor::color
