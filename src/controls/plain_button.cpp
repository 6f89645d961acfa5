#include "controls/plain_button.h"

#include <QHBoxLayout>

#include "controls/symbol_image.h"

namespace velicor::controls {

namespace {

constexpr int titleButtonSide = 20;
constexpr double titleSymbolSize = 9;

}  // namespace

PlainButton::PlainButton(QWidget* content, QWidget* parent)
    : ButtonControl(parent), content_(content), layout_(new QHBoxLayout(this)) {
  content->setAttribute(Qt::WA_TransparentForMouseEvents);
  layout_->setContentsMargins({});
  layout_->setSpacing(0);
  layout_->addWidget(content);
  setSizePolicy(content->sizePolicy());
}

void PlainButton::setClickMargins(const QMargins& margins) { layout_->setContentsMargins(margins); }

QRectF PlainButton::outline() const { return content_->geometry(); }

// The first text in it.
QString PlainButton::accessibleText() const {
  if (const auto* label = dynamic_cast<const Accessible*>(content_)) return label->accessibleText();
  for (const QWidget* child : content_->findChildren<QWidget*>()) {
    const auto* facts = dynamic_cast<const Accessible*>(child);
    if (facts && !facts->accessibleText().isEmpty()) return facts->accessibleText();
  }
  return {};
}

PlainButton* makeTitleButton(std::string_view symbol, const QString& name, QWidget* parent) {
  auto* image = new SymbolImage(symbol, titleSymbolSize, TextColor::secondary, desktop::SymbolWeight::bold);
  auto* button = new PlainButton(image, parent);
  button->setFixedSize(titleButtonSide, titleButtonSide);
  button->setAccessibleName(name);
  return button;
}

}  // namespace velicor::controls
