#include "scopes/panel_title_strip.h"

#include <utility>

#include <QHBoxLayout>

#include "controls/plain_button.h"

namespace velicor {

namespace {

constexpr int leftMargin = 8;
constexpr int rightMargin = 16;  // above the hide button

}  // namespace

PanelTitleStrip::PanelTitleStrip(QWidget* parent)
    : QWidget(parent),
      close_(controls::makeTitleButton("close", QStringLiteral("Quit Velicor"))),
      menu_(controls::makeTitleButton("menu", QStringLiteral("Menu"))) {
  setFixedHeight(height);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(leftMargin, 0, rightMargin, 0);
  row->addWidget(close_);
  row->addStretch();
  row->addWidget(menu_);
  close_->setToolTip(close_->accessibleName());
  close_->onClick = [this] {
    if (onClose) onClose();
  };
  menu_->hide();
  menu_->onClick = [this] {
    if (openMenu_) openMenu_(menu_->mapToGlobal(QPoint(menu_->width(), menu_->height())));
  };
}

void PanelTitleStrip::setMenu(std::function<void(QPoint corner)> open) {
  openMenu_ = std::move(open);
  menu_->setVisible(openMenu_ != nullptr);
}

}  // namespace velicor
