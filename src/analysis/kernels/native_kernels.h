#pragma once

#include "platform/gpu/native/native_kernel.h"

// The kernels in the form that the native device calls; the bindings are listed in default_library.h.
namespace velicor::kernels {

void falseColor(const gpu::NativeArguments& arguments, gpu::GridRange range);
void accumulateScopes(const gpu::NativeArguments& arguments, gpu::GridRange range);
void renderVectorscope(const gpu::NativeArguments& arguments, gpu::GridRange range);
void renderParade(const gpu::NativeArguments& arguments, gpu::GridRange range);
gpu::NativeVertex blitVertex(const gpu::NativeArguments& arguments, int vertexIndex);
void blitFragment(const gpu::NativeArguments& arguments, const gpu::FragmentSpan& span);
void blitScope(const gpu::NativeArguments& arguments, const gpu::FragmentSpan& span);

}  // namespace velicor::kernels
