#pragma once

#include <array>
#include <functional>

#include <QWidget>

#include "palette/palette.h"

namespace velicor::controls {
class Label;
class MiniSlider;
}  // namespace velicor::controls

namespace velicor {

class ColorPatch;
class PresetGrid;

// What a colour well's popover holds: the colour and its hex string, sixteen preset colours, a slider for each
// channel, Cancel and OK. Changes nothing by itself but what it shows. Main thread.
class ColorEditor : public QWidget {
 public:
  explicit ColorEditor(const Palette::RGB& rgb, QWidget* parent = nullptr);

  // The user has moved a slider or clicked a preset; the colour as a whole.
  std::function<void(const Palette::RGB& rgb)> onChange;
  std::function<void()> onCancel;
  std::function<void()> onAccept;

  const Palette::RGB& rgb() const { return rgb_; }
  void setRGB(const Palette::RGB& rgb);

  // A colour with a thin border inside its shape.
  static ColorPatch* swatch(const Palette::RGB& rgb, const QSize& size, double corner);

 private:
  using Component = double Palette::RGB::*;

  struct Channel {
    Component component;
    controls::MiniSlider* slider;
    controls::Label* value;
  };

  void refresh();
  void change(const Palette::RGB& rgb);
  QWidget* header();
  QWidget* channels();
  QWidget* channel(const QString& label, Component component, std::size_t index);
  QWidget* buttons();

  Palette::RGB rgb_;
  ColorPatch* swatch_ = nullptr;
  controls::Label* hex_ = nullptr;
  PresetGrid* presets_ = nullptr;
  std::array<Channel, 3> channels_{};
};

}  // namespace velicor
