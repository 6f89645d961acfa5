#include "palette/preset_grid.h"

#include <algorithm>
#include <string>

#include <QGridLayout>
#include <QKeyEvent>

#include "controls/accessible.h"
#include "palette/color_patch.h"

namespace velicor {

namespace {

constexpr int presetSpacing = 5;
constexpr QSize cellSize(20, 18);
constexpr double cellRadius = 3;
constexpr ColorPatch::Border plainBorder{1, 0.25};
constexpr ColorPatch::Border selectedBorder{2, 0.90};

ColorPatch& patchOf(const controls::PlainButton& cell) { return static_cast<ColorPatch&>(cell.content()); }

}  // namespace

PresetGrid::PresetGrid(QWidget* parent) : QWidget(parent) {
  auto* grid = new QGridLayout(this);
  grid->setContentsMargins({});
  grid->setSpacing(presetSpacing);
  for (std::size_t i = 0; i < presets.size(); ++i) {
    auto* patch = new ColorPatch(cellSize, cellRadius);
    patch->setColor(colorOf(presets[i]));
    patch->setBorder(plainBorder);
    cells_[i] = new controls::PlainButton(patch);
    cells_[i]->setAccessibleName(QString::fromStdString(presets[i].hex()));
    cells_[i]->setAccessibleKind(QAccessible::RadioButton);
    cells_[i]->setAccessibleState([this, i](QAccessible::State& state) {
      state.checkable = true;
      state.checked = i == selected_;
    });
    cells_[i]->onClick = [this, i] {
      if (onPick) onPick(presets[i]);
    };
    grid->addWidget(cells_[i], static_cast<int>(i / columns), static_cast<int>(i % columns));
  }
  setTabStop(0);
}

void PresetGrid::select(const Palette::RGB& rgb) {
  const std::string hex = rgb.hex();
  const auto* found = std::ranges::find(presets, hex, &Palette::RGB::hex);
  const std::size_t before = selected_;
  selected_ = static_cast<std::size_t>(found - presets.begin());
  for (std::size_t i = 0; i < cells_.size(); ++i)
    patchOf(*cells_[i]).setBorder(i == selected_ ? selectedBorder : plainBorder);
  if (selected_ == cells_.size()) return;
  setTabStop(selected_);
  if (before != selected_) controls::announceChecked(*cells_[selected_]);
}

void PresetGrid::setTabStop(std::size_t index) {
  for (std::size_t i = 0; i < cells_.size(); ++i)
    cells_[i]->setFocusPolicy(i == index ? Qt::StrongFocus : Qt::ClickFocus);
}

void PresetGrid::moveFocus(int way) {
  const auto focused = std::ranges::find_if(cells_, [](const auto* cell) { return cell->hasFocus(); });
  const int next = static_cast<int>(focused - cells_.begin()) + way;
  if (focused == cells_.end() || next < 0 || next >= static_cast<int>(cells_.size())) return;
  const auto index = static_cast<std::size_t>(next);
  setTabStop(index);
  cells_[index]->setFocus(Qt::TabFocusReason);
}

void PresetGrid::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Left:
      return moveFocus(-1);
    case Qt::Key_Right:
      return moveFocus(1);
    case Qt::Key_Up:
      return moveFocus(-static_cast<int>(columns));
    case Qt::Key_Down:
      return moveFocus(static_cast<int>(columns));
    default:
      QWidget::keyPressEvent(event);
  }
}

}  // namespace velicor
