#include "platform/screencapture/x11/appearance.h"

#include <algorithm>
#include <cstdint>

namespace velicor::screencapture {

namespace {

// "mutter guard window" and its relatives.
constexpr std::string_view guardName = " guard window";

// No window reaches farther.
constexpr std::int32_t farthest = 0x7fff;

std::optional<DeviceRect> paintedBy(const DeviceRect& client, const std::vector<std::uint32_t>& extents) {
  if (extents.size() != 4) return std::nullopt;
  const auto pixels = [&extents](std::size_t side) { return static_cast<int>(extents[side] & 0xffff); };
  const int left = pixels(0);
  const int top = pixels(2);
  return DeviceRect{client.x - left, client.y - top, client.width + left + pixels(1),
                    client.height + top + pixels(3)};
}

std::optional<DeviceRect> largest(const std::vector<DeviceRect>& rects) {
  const auto area = [](const DeviceRect& rect) {
    return static_cast<std::int64_t>(rect.width) * rect.height;
  };
  const auto place = std::max_element(
      rects.begin(), rects.end(),
      [&](const DeviceRect& one, const DeviceRect& other) { return area(one) < area(other); });
  return place == rects.end() ? std::nullopt : std::optional(*place);
}

// Programs write what they like.
std::vector<DeviceRect> rectsOf(const std::vector<std::uint32_t>& region) {
  const auto bound = [](std::uint32_t value, std::int32_t least) {
    return std::clamp(static_cast<std::int32_t>(value), least, farthest);
  };
  std::vector<DeviceRect> rects;
  for (std::size_t i = 0; i + 3 < region.size(); i += 4) {
    rects.push_back({bound(region[i], -farthest), bound(region[i + 1], -farthest), bound(region[i + 2], 0),
                     bound(region[i + 3], 0)});
  }
  return rects;
}

}  // namespace

Appearance appearanceFrom(const AppearanceProperties& properties, const StateAtoms& atoms) {
  Appearance appearance;
  const auto has = [&states = properties.states](std::uint32_t state) {
    return std::find(states.begin(), states.end(), state) != states.end();
  };
  // Some managers call a window hidden too that is rolled up to its title bar.
  appearance.minimised = has(atoms.hidden) && !has(atoms.shaded);
  appearance.desktop = properties.desktop;
  appearance.opacity = properties.opacity.value_or(properties.clientOpacity.value_or(fullyOpaque));
  appearance.guard = properties.name.ends_with(guardName);
  appearance.clientShaped = properties.clientShaped;
  appearance.clientPlace = properties.clientPlace;
  appearance.insideShape = largest(properties.shape);
  appearance.opaque = largest(rectsOf(properties.opaqueRegion));
  if (properties.clientPlace && appearance.opaque) {
    appearance.opaque = appearance.opaque->translatedBy(properties.clientPlace->x, properties.clientPlace->y)
                            .intersection(*properties.clientPlace);
  }
  if (properties.clientPlace) appearance.painted = paintedBy(*properties.clientPlace, properties.extents);
  return appearance;
}

}  // namespace velicor::screencapture
