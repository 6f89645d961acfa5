#include "platform/screencapture/x11/appearance.h"

#include <algorithm>

namespace velicor::screencapture {

namespace {

// "mutter guard window" and its relatives.
constexpr std::string_view guardName = " guard window";

std::optional<DeviceRect> paintedBy(const DeviceRect& client, const std::vector<std::uint32_t>& extents) {
  if (extents.size() != 4) return std::nullopt;
  const auto pixels = [&extents](std::size_t side) { return static_cast<int>(extents[side] & 0xffff); };
  const int left = pixels(0);
  const int top = pixels(2);
  return DeviceRect{client.x - left, client.y - top, client.width + left + pixels(1),
                    client.height + top + pixels(3)};
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
  if (properties.clientPlace) appearance.painted = paintedBy(*properties.clientPlace, properties.extents);
  return appearance;
}

}  // namespace velicor::screencapture
