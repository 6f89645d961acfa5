#pragma once

#include <functional>
#include <memory>

#include "controls/plain_button.h"
#include "palette/palette.h"

namespace velicor::controls {
class Popover;
}

namespace velicor::desktop {
class Desktop;
}

namespace velicor {

class ColorEditor;
class ColorPatch;

// A colour as a small button. Its click opens a popover in which the colour is changed at once with every
// movement; Cancel there puts back the colour that it had when the popover opened. Main thread.
class ColorWell : public controls::PlainButton {
 public:
  // The desktop carries the popover and outlives the well.
  ColorWell(desktop::Desktop& desktop, const Palette::RGB& rgb, QWidget* parent = nullptr);
  ~ColorWell() override;

  // The user has changed the colour. Must not destroy the well.
  std::function<void(const Palette::RGB& rgb)> onChange;

  const Palette::RGB& rgb() const { return rgb_; }
  void setRGB(const Palette::RGB& rgb);

  // Whether the popover is shown.
  bool open() const { return open_; }

  // The colour when the popover was opened last; black before.
  const Palette::RGB& backup() const { return backup_; }

  // The popover's content; none before it was opened first.
  ColorEditor* editor() const { return editor_; }

  QString accessibleDescription() const override;

 protected:
  void activate() override;

 private:
  void write(const Palette::RGB& rgb);
  void setOpen(bool open);
  void close();
  void makePopover();

  desktop::Desktop& desktop_;
  ColorPatch& swatch_;
  Palette::RGB rgb_;
  Palette::RGB backup_;
  bool open_ = false;
  std::unique_ptr<controls::Popover> popover_;
  ColorEditor* editor_ = nullptr;  // the popover's
};

}  // namespace velicor
