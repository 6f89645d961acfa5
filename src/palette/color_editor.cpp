#include "palette/color_editor.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "controls/label.h"
#include "controls/layout.h"
#include "controls/mini_slider.h"
#include "controls/push_button.h"
#include "palette/color_patch.h"
#include "palette/preset_grid.h"

namespace velicor {

namespace {

using controls::Face;
using controls::Label;
using controls::TextColor;

constexpr int wholeWidth = 236;  // paddings included
constexpr int popoverPadding = 14;
constexpr int groupSpacing = 12;
constexpr int patchSpacing = 10;
constexpr int channelRowSpacing = 6;
constexpr int itemSpacing = 8;
constexpr int channelLabelWidth = 10;
constexpr int channelValueWidth = 26;
constexpr QSize swatchSize(54, 26);
constexpr double swatchRadius = 5;
constexpr ColorPatch::Border swatchBorder{1, 0.35};

constexpr controls::TextStyle hexStyle{.size = 11, .color = TextColor::secondary, .face = Face::monospaced};
constexpr controls::TextStyle channelStyle{
    .size = 10, .weight = QFont::DemiBold, .color = TextColor::secondary};
constexpr controls::TextStyle valueStyle{.size = 10, .color = TextColor::secondary, .face = Face::tabular};

QString byteText(double component) { return QString::number(Palette::RGB::byteOf(component)); }

}  // namespace

ColorPatch* ColorEditor::swatch(const Palette::RGB& rgb, const QSize& size, double corner) {
  auto* swatch = new ColorPatch(size, corner);
  swatch->setColor(colorOf(rgb));
  swatch->setBorder(swatchBorder);
  return swatch;
}

ColorEditor::ColorEditor(const Palette::RGB& rgb, QWidget* parent) : QWidget(parent), rgb_(rgb) {
  setFixedWidth(wholeWidth);
  auto* items = controls::plainLayout<QVBoxLayout>(this, groupSpacing);
  items->setContentsMargins(popoverPadding, popoverPadding, popoverPadding, popoverPadding);
  items->addWidget(header());
  presets_ = new PresetGrid;
  presets_->onPick = [this](const Palette::RGB& preset) { change(preset); };
  items->addWidget(presets_, 0, Qt::AlignHCenter);
  items->addWidget(channels());
  items->addWidget(buttons());
  refresh();
}

void ColorEditor::setRGB(const Palette::RGB& rgb) {
  if (rgb == rgb_) return;
  rgb_ = rgb;
  refresh();
}

void ColorEditor::change(const Palette::RGB& rgb) {
  setRGB(rgb);
  if (onChange) onChange(rgb);
}

void ColorEditor::refresh() {
  const QString hex = QString::fromStdString(rgb_.hex());
  swatch_->setColor(colorOf(rgb_));
  hex_->setText(hex);
  presets_->select(rgb_);
  for (const Channel& channel : channels_) {
    channel.slider->setValue(rgb_.*channel.component);
    channel.value->setText(byteText(rgb_.*channel.component));
  }
}

QWidget* ColorEditor::header() {
  auto* header = new QWidget;
  auto* items = controls::plainLayout<QHBoxLayout>(header, patchSpacing);
  swatch_ = swatch(rgb_, swatchSize, swatchRadius);
  hex_ = new Label({}, hexStyle);
  items->addWidget(swatch_, 0, Qt::AlignVCenter);
  items->addWidget(hex_, 0, Qt::AlignVCenter);
  items->addStretch();
  return header;
}

QWidget* ColorEditor::channels() {
  auto* rows = new QWidget;
  auto* items = controls::plainLayout<QVBoxLayout>(rows, channelRowSpacing);
  items->addWidget(channel(QStringLiteral("R"), &Palette::RGB::r, 0));
  items->addWidget(channel(QStringLiteral("G"), &Palette::RGB::g, 1));
  items->addWidget(channel(QStringLiteral("B"), &Palette::RGB::b, 2));
  return rows;
}

QWidget* ColorEditor::channel(const QString& label, Component component, std::size_t index) {
  auto* name = new Label(label, channelStyle);
  name->setFixedWidth(channelLabelWidth);
  name->setAlignment(Qt::AlignHCenter);
  auto* slider = new controls::MiniSlider;
  slider->setStep(1.0 / 255);
  slider->wording = byteText;
  slider->setAccessibleName(label);
  slider->onChange = [this, component](double value) {
    Palette::RGB changed = rgb_;
    changed.*component = value;
    change(changed);
  };
  auto* value = new Label({}, valueStyle);
  value->setFixedWidth(channelValueWidth);
  value->setAlignment(Qt::AlignRight);
  channels_[index] = {component, slider, value};

  auto* row = new QWidget;
  auto* items = controls::plainLayout<QHBoxLayout>(row, itemSpacing);
  items->addWidget(name, 0, Qt::AlignVCenter);
  items->addWidget(slider);
  items->addWidget(value, 0, Qt::AlignVCenter);
  return row;
}

QWidget* ColorEditor::buttons() {
  auto* cancel = new controls::PushButton(QStringLiteral("Cancel"));
  cancel->onClick = [this] {
    if (onCancel) onCancel();
  };
  auto* accept = new controls::PushButton(QStringLiteral("OK"));
  accept->setDefault(true);
  accept->onClick = [this] {
    if (onAccept) onAccept();
  };
  auto* row = new QWidget;
  auto* items = controls::plainLayout<QHBoxLayout>(row, itemSpacing);
  items->addStretch();
  items->addWidget(cancel);
  items->addWidget(accept);
  return row;
}

}  // namespace velicor
