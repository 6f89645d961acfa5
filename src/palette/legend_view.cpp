#include "palette/legend_view.h"

#include <QHBoxLayout>

#include "controls/label.h"
#include "palette/color_patch.h"

namespace velicor {

namespace {

using controls::Label;
using controls::TextColor;
using Mode = MetalProcessor::Mode;

constexpr int legendPadding = 8;  // above and below
constexpr int chipSpacing = 12;
constexpr int labelSpacing = 5;
constexpr int squareSide = 10;
constexpr double squareRadius = 2;
constexpr controls::TextStyle labelStyle{.size = 11, .color = TextColor::secondary};
constexpr QColor nonSkin(128, 128, 128);

}  // namespace

LegendView::LegendView(Mode mode, const Palette& palette, QWidget* parent)
    : QWidget(parent), mode_(mode), palette_(palette) {
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, legendPadding, 0, legendPadding);
  layout->setSpacing(0);
  rebuild();
}

void LegendView::setMode(Mode mode) {
  if (mode == mode_) return;
  mode_ = mode;
  rebuild();
}

void LegendView::setPalette(const Palette& palette) {
  palette_ = palette;
  const std::vector<Entry> current = entries();
  for (std::size_t i = 0; i < current.size(); ++i)
    squares_[i]->setColor(current[i].color);
}

std::vector<LegendView::Entry> LegendView::entries() const {
  const auto& heat = palette_.heat;
  switch (mode_) {
    case Mode::skin:
      return {{"correct", colorOf(palette_.skinOn)},
              {"green", colorOf(palette_.skinGreen)},
              {"pink", colorOf(palette_.skinPink)},
              {"non-skin", nonSkin}};
    case Mode::exposure:
      return {{"clip", colorOf(heat[7])},      {"hot", colorOf(heat[5])},    {"skin", colorOf(heat[4])},
              {"dark skin", colorOf(heat[3])}, {"shadow", colorOf(heat[2])}, {"black", colorOf(heat[0])}};
    case Mode::original:
      break;
  }
  return {};
}

void LegendView::rebuild() {
  delete row_;
  squares_.clear();
  row_ = new QWidget;
  auto* items = new QHBoxLayout(row_);
  items->setContentsMargins({});
  items->setSpacing(chipSpacing);
  for (const Entry& entry : entries())
    items->addWidget(chip(entry.color, QString::fromLatin1(entry.label)), 0, Qt::AlignVCenter);
  if (squares_.empty()) items->addWidget(new Label(QStringLiteral("analysis off"), labelStyle));
  layout()->addWidget(row_);
  layout()->setAlignment(row_, Qt::AlignCenter);
}

QWidget* LegendView::chip(const QColor& color, const QString& label) {
  auto* chip = new QWidget;
  auto* items = new QHBoxLayout(chip);
  items->setContentsMargins({});
  items->setSpacing(labelSpacing);
  auto* square = new ColorPatch({squareSide, squareSide}, squareRadius);
  square->setColor(color);
  squares_.push_back(square);
  items->addWidget(square, 0, Qt::AlignVCenter);
  items->addWidget(new Label(label, labelStyle), 0, Qt::AlignVCenter);
  return chip;
}

}  // namespace velicor
