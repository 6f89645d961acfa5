#pragma once

#include <cstdint>
#include <vector>

#include <QColor>

namespace velicor::tray {

// What a tray says that icons on it should look like, from the numbers of its property: sixteen bits for each
// of red, green and blue, the ordinary colour first. Invalid for too few of them.
QColor foregroundFrom(const std::vector<std::uint32_t>& numbers);

}  // namespace velicor::tray
