#include "platform/tray/tray_colors.h"

namespace velicor::tray {

QColor foregroundFrom(const std::vector<std::uint32_t>& numbers) {
  if (numbers.size() < 3) return {};
  const auto channel = [&numbers](std::size_t i) { return static_cast<int>(numbers[i] >> 8 & 0xFF); };
  return QColor(channel(0), channel(1), channel(2));
}

}  // namespace velicor::tray
