#pragma once

#include <functional>
#include <vector>

#include <QWidget>

#include "analysis/metal_processor.h"
#include "controls/motion.h"
#include "palette/palette.h"

class QHBoxLayout;

namespace velicor::controls {
class PlainButton;
class Reveal;
class SymbolImage;
}  // namespace velicor::controls

namespace velicor::desktop {
class Desktop;
}

namespace velicor {

class ColorPatch;
class ColorWell;

// The section in which the user changes the colours of a mode: a header line that folds it in and out, shows
// the colours and offers to reset them, and below it a colour well for each. Takes no room in the mode
// without colours. Main thread.
class PaletteEditor : public QWidget {
 public:
  // Folded in. The desktop carries the wells' popovers and outlives the editor.
  PaletteEditor(desktop::Desktop& desktop, const Palette& palette, MetalProcessor::Mode mode,
                QWidget* parent = nullptr);
  ~PaletteEditor() override;

  // The user has changed the palette, on every movement. Must not destroy the editor.
  std::function<void(const Palette& palette)> onChange;

  const Palette& palette() const { return palette_; }
  void setPalette(const Palette& palette);

  MetalProcessor::Mode mode() const { return mode_; }

  // Wells of the old mode go, with their popover; folded out stays folded out.
  void setMode(MetalProcessor::Mode mode);

  bool expanded() const { return expanded_; }

 private:
  // One colour of the palette.
  using Entry = Palette::RGB& (*)(Palette& palette, std::size_t index);

  void setExpanded(bool expanded);
  void rebuild();
  void refresh();
  void refreshPreview();
  QWidget* headerRow();
  QWidget* preview();
  QWidget* skinWells();
  QWidget* heatWells();
  QWidget* well(const QString& label, Entry entry, std::size_t index);
  void write(const Palette& palette);

  struct Well {
    ColorWell* view;
    Entry entry;
    std::size_t index;
  };

  desktop::Desktop& desktop_;
  Palette palette_;
  MetalProcessor::Mode mode_;
  bool expanded_ = false;
  QWidget* content_ = nullptr;
  controls::SymbolImage* chevron_ = nullptr;
  controls::PlainButton* reset_ = nullptr;
  controls::Reveal* wellsArea_ = nullptr;
  std::vector<ColorPatch*> previewPatches_;
  std::vector<Well> wells_;
  controls::Motion turn_;  // of the chevron, 0…1
};

}  // namespace velicor
