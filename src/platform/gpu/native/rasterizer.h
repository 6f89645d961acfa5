#pragma once

#include <array>
#include <functional>

#include "platform/gpu/native/native_kernel.h"

namespace velicor::gpu {

using Triangle = std::array<NativeVertex, 3>;

// The rows of pixels whose centres lie in the triangle, top to bottom, clipped to the target. A centre
// exactly on a left or upper edge belongs to the triangle, on a right or lower one it does not. Either
// winding.
void forEachSpan(const Triangle& triangle, const NativeImage& target,
                 const std::function<void(const FragmentSpan&)>& draw);

// Only those of the rows firstRow ≤ y < endRow of the target, with the same values.
void forEachSpan(const Triangle& triangle, const NativeImage& target, int firstRow, int endRow,
                 const std::function<void(const FragmentSpan&)>& draw);

}  // namespace velicor::gpu
