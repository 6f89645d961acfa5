#pragma once

#include <vector>

#include <QWidget>

#include "analysis/metal_processor.h"
#include "palette/palette.h"

class QHBoxLayout;

namespace velicor {

class ColorPatch;

// One line that says what the loupe's colours mean in a mode: a square and a word each, in the middle of the
// width it is given. Main thread.
class LegendView : public QWidget {
 public:
  LegendView(MetalProcessor::Mode mode, const Palette& palette, QWidget* parent = nullptr);

  MetalProcessor::Mode mode() const { return mode_; }
  void setMode(MetalProcessor::Mode mode);
  void setPalette(const Palette& palette);

 private:
  struct Entry {
    const char* label = "";
    QColor color;
  };
  std::vector<Entry> entries() const;
  void rebuild();
  QWidget* chip(const QColor& color, const QString& label);

  MetalProcessor::Mode mode_;
  Palette palette_;
  QWidget* row_ = nullptr;
  std::vector<ColorPatch*> squares_;
};

}  // namespace velicor
