#pragma once

#include <array>
#include <functional>

#include <QWidget>

#include "controls/plain_button.h"
#include "palette/palette.h"

namespace velicor {

// Sixteen colours to pick from, in two rows. One of them is a stop on the way of Tab; the arrow keys go from
// there to the others, and Space picks one: Return belongs to the window's default button. Main thread.
class PresetGrid : public QWidget {
 public:
  explicit PresetGrid(QWidget* parent = nullptr);

  // With the preset's exact components.
  std::function<void(const Palette::RGB& preset)> onPick;

  // Marks the preset that has this colour's hex string, if there is one.
  void select(const Palette::RGB& rgb);

  static constexpr std::size_t columns = 8;
  static constexpr std::array<Palette::RGB, 16> presets{{{1.0, 1.0, 1.0},
                                                         {0.6, 0.6, 0.6},
                                                         {0.0, 0.0, 0.0},
                                                         {1.0, 0.949, 0.0},
                                                         {1.0, 0.478, 0.0},
                                                         {1.0, 0.0, 0.0},
                                                         {1.0, 0.102, 0.749},
                                                         {0.541, 0.169, 0.886},
                                                         {0.18, 0.451, 0.8},
                                                         {0.0, 0.898, 1.0},
                                                         {0.0, 0.749, 0.647},
                                                         {0.0, 1.0, 0.149},
                                                         {0.251, 0.678, 0.376},
                                                         {0.776, 1.0, 0.0},
                                                         {1.0, 0.494, 0.714},
                                                         {0.42, 0.0, 0.55}}};

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void setTabStop(std::size_t index);
  void moveFocus(int way);

  std::array<controls::PlainButton*, presets.size()> cells_{};
  std::size_t selected_ = presets.size();  // none
};

}  // namespace velicor
