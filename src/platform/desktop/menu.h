#pragma once

#include <functional>
#include <optional>
#include <vector>

#include <QKeySequence>
#include <QString>

namespace velicor::desktop {

// One line of a menu as it is at the moment, whoever shows it. An item without a title is a separator.
struct MenuItem {
  QString title;
  std::function<void()> action{};
  bool enabled = true;
  std::optional<bool> checked{};  // with a check mark, on or off
  QKeySequence shortcut{};
  std::vector<MenuItem> submenu{};

  bool isSeparator() const { return title.isEmpty(); }

  // The title of the items below it.
  bool isHeading() const { return !isSeparator() && !action && submenu.empty(); }
};

// From the top to the bottom.
using Menu = std::vector<MenuItem>;

}  // namespace velicor::desktop
