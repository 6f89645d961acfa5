#include <algorithm>
#include <cstring>
#include <vector>

#include "analysis/kernels/blit_places.h"
#include "analysis/kernels/kernel_interface.h"
#include "analysis/kernels/native_kernels.h"
#include "analysis/kernels/rows/rows.h"
#include "platform/gpu/native/scratch.h"

namespace velicor::kernels {

namespace {

// Edges between texels, rounded to 1/1024 texel, are exact hits where they should be.
constexpr std::int64_t steps = 1024;

// Moved up by some texels, truncation rounds the same way on both sides of zero.
std::int64_t inSteps(double texels) {
  constexpr std::int64_t raised = 64;
  // NOLINTNEXTLINE(bugprone-incorrect-roundings): as the other devices round
  return static_cast<std::int64_t>((texels + raised) * steps + 0.5) - raised * steps;
}

bool isReduced(const gpu::FragmentSpan& span, const gpu::NativeImage& source) {
  return inSteps(span.du * source.width) > steps || inSteps(span.dvDown * source.height) > steps;
}

// The texels that a pixel covers along one axis; its center and its extent in texels. The outermost pixels
// cover what lies beyond them as well: their neighbours' centers are outside, and nothing else would show it.
TexelRun coveredBy(double center, double extent, int count) {
  const bool isFirst = inSteps(center - extent) < 0;
  const bool isLast = inSteps(center + extent) >= count * steps;
  const std::int64_t begin =
      isFirst ? 0 : std::min<std::int64_t>(inSteps(center - extent / 2) / steps, count - 1);
  const std::int64_t end = isLast ? count : (inSteps(center + extent / 2) + steps - 1) / steps;
  return {static_cast<std::int32_t>(begin), static_cast<std::int32_t>(std::max(end, begin + 1))};
}

// A row of what no channel of a scope falls below on the screen. Alpha is the picture's. Each thread keeps
// the longest.
const std::byte* groundRow(std::size_t pixels) {
  thread_local std::vector<Packed> row;
  if (row.size() < pixels) row.assign(pixels, packed({scopeGround, scopeGround, scopeGround, 0}));
  return reinterpret_cast<const std::byte*>(row.data());
}

void drawBrightest(const gpu::NativeImage& source, const gpu::FragmentSpan& span, InnerSpan inner) {
  const auto width = static_cast<std::size_t>(source.width);
  std::byte* brightest = gpu::scratchBytes(gpu::bytesPerPixel * width).data();
  std::memcpy(brightest, groundRow(width), gpu::bytesPerPixel * width);
  const TexelRun rows = coveredBy(span.v * source.height, span.dvDown * source.height, source.height);
  for (int y = rows.begin; y < rows.end; ++y)
    brighten(brightest, source.row(y), width);
  thread_local RowPlaces<TexelRun> lastRuns;
  const std::vector<TexelRun>& runs = lastRuns.of(span, inner, source.width, [&](double u) {
    return coveredBy(u * source.width, span.du * source.width, source.width);
  });
  findBrightest(brightest, runs.data(), runs.size(), source.format != span.target.format,
                span.target.pixel(inner.begin, span.y));
}

}  // namespace

void blitScope(const gpu::NativeArguments& arguments, const gpu::FragmentSpan& span) {
  const gpu::NativeImage& source = arguments.texture(0);
  if (!isInside(position(span.v, source.height), source.height)) return;
  const InnerSpan inner = innerSpan(span, source.width);
  if (inner.begin >= inner.end) return;
  if (isReduced(span, source)) return drawBrightest(source, span, inner);
  blitFragment(arguments, span);
  const auto count = static_cast<std::size_t>(inner.end - inner.begin);
  brighten(span.target.pixel(inner.begin, span.y), groundRow(count), count);
}

}  // namespace velicor::kernels
