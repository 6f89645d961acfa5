#include "palette/color_well.h"

#include "controls/accessible.h"
#include "controls/popover.h"
#include "palette/color_editor.h"
#include "palette/color_patch.h"

namespace velicor {

namespace {

constexpr QSize wellSize(36, 18);
constexpr double wellRadius = 4;

}  // namespace

ColorWell::ColorWell(desktop::Desktop& desktop, const Palette::RGB& rgb, QWidget* parent)
    : PlainButton(ColorEditor::swatch(rgb, wellSize, wellRadius), parent),
      desktop_(desktop),
      swatch_(static_cast<ColorPatch&>(content())),
      rgb_(rgb) {
  setOutlineRadius(wellRadius);
  setAccessibleKind(QAccessible::ButtonDropDown);
  setAccessibleState([this](QAccessible::State& state) {
    state.hasPopup = true;
    state.expandable = true;
    state.expanded = open_;
  });
}

ColorWell::~ColorWell() = default;

void ColorWell::setRGB(const Palette::RGB& rgb) {
  if (rgb == rgb_) return;
  rgb_ = rgb;
  swatch_.setColor(colorOf(rgb));
  controls::announceDescription(*this);
  if (editor_) editor_->setRGB(rgb);
}

QString ColorWell::accessibleDescription() const { return QString::fromStdString(rgb_.hex()); }

void ColorWell::write(const Palette::RGB& rgb) {
  setRGB(rgb);
  if (onChange) onChange(rgb);
}

void ColorWell::activate() {
  if (open_) return;
  backup_ = rgb_;
  setOpen(true);
  if (!popover_) makePopover();
  popover_->show(usesKeys() ? Qt::TabFocusReason : Qt::OtherFocusReason);
}

void ColorWell::setOpen(bool open) {
  open_ = open;
  controls::announceExpanded(*this);
}

void ColorWell::close() {
  setOpen(false);
  popover_->hide();
}

void ColorWell::makePopover() {
  auto editor = std::make_unique<ColorEditor>(rgb_);
  editor_ = editor.get();
  editor_->onChange = [this](const Palette::RGB& rgb) { write(rgb); };
  editor_->onCancel = [this] {
    write(backup_);
    close();
  };
  editor_->onAccept = [this] { close(); };
  popover_ = std::make_unique<controls::Popover>(desktop_, *this, std::move(editor));
  popover_->onDismiss = [this] { setOpen(false); };
}

}  // namespace velicor
