#include "palette/palette_editor.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "controls/label.h"
#include "controls/layout.h"
#include "controls/plain_button.h"
#include "controls/reveal.h"
#include "controls/symbol_image.h"
#include "palette/color_patch.h"
#include "palette/color_well.h"

namespace velicor {

namespace {

using controls::Label;
using controls::PlainButton;
using controls::TextColor;
using controls::TextFit;
using Mode = MetalProcessor::Mode;

constexpr int padding = 8;  // above and below the whole
constexpr int spacing = 8;
constexpr int headerSpacing = 6;
constexpr int columnSpacing = 12;
constexpr int narrowestColumn = 10;
constexpr int wellsPaddingAbove = 10;
constexpr int wellsPaddingBelow = 4;
constexpr int headerReach = 4;  // how far into the paddings above and below it the header takes clicks
constexpr double patchRadius = 2;
constexpr QSize skinPatch(14, 9);
constexpr QSize heatBar(96, 9);
constexpr int previewSpacing = 3;

constexpr controls::TextStyle captionStyle{
    .size = 10, .weight = QFont::DemiBold, .color = TextColor::secondary, .letterSpacing = 1.2};
constexpr controls::TextStyle resetStyle{.size = 10, .weight = QFont::DemiBold, .color = TextColor::accent};
constexpr controls::TextStyle wellStyle{.size = 11, .color = TextColor::secondary};

Palette::RGB& skinEntry(Palette& palette, std::size_t index) {
  Palette::RGB* const entries[] = {&palette.skinOn, &palette.skinGreen, &palette.skinPink};
  return *entries[index];
}

Palette::RGB& heatEntry(Palette& palette, std::size_t index) { return palette.heat[index]; }

QString heatLabel(std::size_t index) {
  const std::string name(Palette::heatNames[index]);
  return QString::number(static_cast<int>(Palette::heatLevels[index] * 100)) + QStringLiteral("%  ") +
         QString::fromStdString(name);
}

}  // namespace

PaletteEditor::PaletteEditor(desktop::Desktop& desktop, const Palette& palette, Mode mode, QWidget* parent)
    : QWidget(parent), desktop_(desktop), palette_(palette), mode_(mode), turn_(0, [this] {
        if (chevron_) chevron_->setRotation(90 * turn_.value());
      }) {
  controls::plainLayout<QVBoxLayout>(this, 0);
  rebuild();
}

PaletteEditor::~PaletteEditor() = default;

void PaletteEditor::setPalette(const Palette& palette) {
  if (palette == palette_) return;
  palette_ = palette;
  refresh();
}

void PaletteEditor::setMode(Mode mode) {
  if (mode == mode_) return;
  mode_ = mode;
  rebuild();
}

void PaletteEditor::setExpanded(bool expanded) {
  expanded_ = expanded;
  turn_.moveTo(expanded ? 1 : 0);
  if (wellsArea_) wellsArea_->setExpanded(expanded);
}

void PaletteEditor::write(const Palette& palette) {
  setPalette(palette);
  if (onChange) onChange(palette);
}

void PaletteEditor::rebuild() {
  delete content_;
  content_ = nullptr;
  chevron_ = nullptr;
  reset_ = nullptr;
  wellsArea_ = nullptr;
  previewPatches_.clear();
  wells_.clear();
  if (mode_ == Mode::original) return updateGeometry();
  content_ = new QWidget;
  auto* items = controls::plainLayout<QVBoxLayout>(content_, 0);
  items->setContentsMargins(0, padding - headerReach, 0, padding - headerReach);
  items->addWidget(headerRow());
  QWidget* wells = mode_ == Mode::skin ? skinWells() : heatWells();
  wellsArea_ = new controls::Reveal(wells, expanded_);
  items->addWidget(wellsArea_);
  layout()->addWidget(content_);
  refresh();
}

void PaletteEditor::refresh() {
  if (mode_ == Mode::original) return;
  refreshPreview();
  reset_->setVisible(palette_.stored() != Palette::standard().stored());
  for (const Well& well : wells_)
    well.view->setRGB(well.entry(palette_, well.index));
}

void PaletteEditor::refreshPreview() {
  if (mode_ == Mode::skin) {
    for (std::size_t i = 0; i < previewPatches_.size(); ++i)
      previewPatches_[i]->setColor(colorOf(skinEntry(palette_, i)));
    return;
  }
  QGradientStops stops;
  for (std::size_t i = 0; i < Palette::heatCount; ++i)
    stops.append({Palette::heatLevels[i], colorOf(palette_.heat[i])});
  previewPatches_.front()->setStops(stops);
}

QWidget* PaletteEditor::headerRow() {
  auto* label = new QWidget;
  auto* items = controls::plainLayout<QHBoxLayout>(label, headerSpacing);
  chevron_ = new controls::SymbolImage("chevron.right", 9, TextColor::secondary, desktop::SymbolWeight::bold);
  chevron_->setRotation(90 * turn_.value());
  items->addWidget(chevron_, 0, Qt::AlignVCenter);
  items->addWidget(new Label(QStringLiteral("CHANGE COLORS"), captionStyle), 0, Qt::AlignVCenter);
  items->addWidget(preview(), 0, Qt::AlignVCenter);

  auto* disclosure = new PlainButton(label);
  disclosure->setClickMargins({0, headerReach, 0, headerReach});
  disclosure->setAccessibleState([this](QAccessible::State& state) {
    state.expandable = true;
    state.expanded = expanded_;
    state.collapsed = !expanded_;
  });
  disclosure->onClick = [this, disclosure] {
    setExpanded(!expanded_);
    controls::announceExpanded(*disclosure);
  };

  reset_ = new PlainButton(new Label(QStringLiteral("Reset"), resetStyle));
  reset_->setClickMargins({0, headerReach, 0, headerReach});
  reset_->setToolTip(QStringLiteral("Back to the standard false-color palette."));
  reset_->onClick = [this] { write(Palette::standard()); };

  auto* row = new QWidget;
  auto* rowItems = controls::plainLayout<QHBoxLayout>(row, spacing);
  rowItems->addWidget(disclosure, 0, Qt::AlignVCenter);
  rowItems->addStretch();
  rowItems->addWidget(reset_, 0, Qt::AlignVCenter);
  return row;
}

QWidget* PaletteEditor::preview() {
  auto* preview = new QWidget;
  auto* items = controls::plainLayout<QHBoxLayout>(preview, previewSpacing);
  const bool skin = mode_ == Mode::skin;
  for (int i = 0; i < (skin ? 3 : 1); ++i) {
    previewPatches_.push_back(new ColorPatch(skin ? skinPatch : heatBar, patchRadius));
    items->addWidget(previewPatches_.back(), 0, Qt::AlignVCenter);
  }
  return preview;
}

QWidget* PaletteEditor::skinWells() {
  constexpr const char* labels[] = {"On the skin line", "Drifting green", "Drifting pink"};
  auto* wells = new QWidget;
  auto* rows = controls::plainLayout<QVBoxLayout>(wells, spacing);
  rows->setContentsMargins(0, wellsPaddingAbove - headerReach, 0, wellsPaddingBelow + headerReach);
  for (std::size_t i = 0; i < std::size(labels); ++i)
    rows->addWidget(well(QString::fromLatin1(labels[i]), skinEntry, i));
  return wells;
}

QWidget* PaletteEditor::heatWells() {
  auto* wells = new QWidget;
  auto* grid = new QGridLayout(wells);
  grid->setContentsMargins(0, wellsPaddingAbove - headerReach, 0, wellsPaddingBelow + headerReach);
  grid->setHorizontalSpacing(columnSpacing);
  grid->setVerticalSpacing(spacing);
  for (int column = 0; column < 2; ++column) {
    grid->setColumnStretch(column, 1);
    grid->setColumnMinimumWidth(column, narrowestColumn);
  }
  for (std::size_t i = 0; i < Palette::heatCount; ++i) {
    const int place = static_cast<int>(i);
    grid->addWidget(well(heatLabel(i), heatEntry, i), place / 2, place % 2);
  }
  return wells;
}

QWidget* PaletteEditor::well(const QString& label, Entry entry, std::size_t index) {
  auto* view = new ColorWell(desktop_, entry(palette_, index));
  view->setAccessibleName(label.simplified());
  view->onChange = [this, entry, index](const Palette::RGB& rgb) {
    Palette changed = palette_;
    entry(changed, index) = rgb;
    write(changed);
  };
  wells_.push_back({view, entry, index});

  auto* row = new QWidget;
  auto* items = controls::plainLayout<QHBoxLayout>(row, spacing);
  items->addWidget(view, 0, Qt::AlignVCenter);
  items->addWidget(new Label(label, wellStyle, TextFit::shrink), 0, Qt::AlignVCenter);
  items->addStretch();
  return row;
}

}  // namespace velicor
