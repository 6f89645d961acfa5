#include "scopes/mode_tabs.h"

#include <algorithm>
#include <cmath>

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

#include "controls/drawing.h"
#include "controls/label.h"
#include "controls/motion.h"
#include "controls/plain_button.h"
#include "platform/desktop/look.h"

namespace velicor {

namespace {

using controls::TextColor;
using Mode = MetalProcessor::Mode;

constexpr double titleSize = 12;
constexpr int titleGap = 5;  // between the title and its underline
constexpr double underlineHeight = 1.5;
constexpr int bottomPadding = 10;

QString titleOf(Mode mode) {
  switch (mode) {
    case Mode::original:
      return QStringLiteral("Original");
    case Mode::skin:
      return QStringLiteral("Skin");
    case Mode::exposure:
      break;
  }
  return QStringLiteral("Exposure");
}

controls::TextStyle styleOf(bool current) {
  return {.size = titleSize,
          .weight = current ? QFont::DemiBold : QFont::Normal,
          .color = current ? TextColor::primary : TextColor::secondary};
}

// A line at the top of the rows that it takes, in whole device pixels.
class Underline : public QWidget {
 public:
  explicit Underline(bool shown) : presence_(shown ? 1 : 0, [this] { update(); }) {
    setFixedHeight(static_cast<int>(std::lround(underlineHeight)));
  }

  void setShown(bool shown) { presence_.moveTo(shown ? 1 : 0); }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    const QRectF line(0, 0, width(), controls::pixelWidth(painter, underlineHeight));
    painter.fillRect(line, look::faded(look::accent, presence_.value()));
  }

 private:
  controls::Motion presence_;
};

// A tab's title over its underline.
class TabFace : public QWidget {
 public:
  TabFace(const QString& title, bool current)
      : title_(new controls::Label(title, styleOf(current), controls::TextFit::shrink)), underline_(new Underline(current)) {
    title_->setAlignment(Qt::AlignHCenter);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(titleGap);
    column->addWidget(title_);
    column->addWidget(underline_);
    // The share of the width does not depend on the title.
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  }

  void setCurrent(bool current) {
    title_->setStyle(styleOf(current));
    underline_->setShown(current);
  }

 private:
  controls::Label* const title_;
  Underline* const underline_;
};

}  // namespace

class ModeTabs::Tab : public controls::PlainButton {
 public:
  Tab(Mode mode, bool current) : Tab(mode, current, new TabFace(titleOf(mode), current)) {}

  Mode mode() const { return mode_; }

  void setCurrent(bool current) {
    if (current == current_) return;
    current_ = current;
    face_->setCurrent(current);
    controls::announceSelected(*this);
  }

 private:
  Tab(Mode mode, bool current, TabFace* face) : PlainButton(face), mode_(mode), face_(face), current_(current) {
    setAccessibleKind(QAccessible::PageTab);
    setAccessibleState([this](QAccessible::State& state) {
      state.selectable = true;
      state.selected = current_;
    });
  }

  const Mode mode_;
  TabFace* const face_;
  bool current_;
};

ModeTabs::ModeTabs(Mode mode, QWidget* parent) : QWidget(parent) {
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, bottomPadding);
  row->setSpacing(0);
  for (const Mode each : MetalProcessor::allModes) {
    auto* tab = new Tab(each, each == mode);
    tab->onClick = [this, each] {
      if (onSelect) onSelect(each);
    };
    row->addWidget(tab, 1);
    tabs_.push_back(tab);
  }
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

ModeTabs::~ModeTabs() = default;

void ModeTabs::setMode(Mode mode) {
  for (Tab* tab : tabs_) tab->setCurrent(tab->mode() == mode);
}

// What the tab that has the keyboard has no use for.
void ModeTabs::keyPressEvent(QKeyEvent* event) {
  const int way = event->key() == Qt::Key_Left ? -1 : event->key() == Qt::Key_Right ? 1 : 0;
  const auto focused = std::ranges::find_if(tabs_, [](const Tab* tab) { return tab->hasFocus(); });
  if (way == 0 || focused == tabs_.end()) return QWidget::keyPressEvent(event);
  const auto last = static_cast<std::ptrdiff_t>(tabs_.size()) - 1;
  const auto next = std::clamp<std::ptrdiff_t>(focused - tabs_.begin() + way, 0, last);
  Tab& wanted = *tabs_[static_cast<std::size_t>(next)];
  wanted.setFocus(Qt::TabFocusReason);
  wanted.click();
}

QWidget& ModeTabs::tab(Mode mode) const { return *tabs_.at(static_cast<std::size_t>(MetalProcessor::id(mode))); }

QString ModeTabs::accessibleText() const { return QStringLiteral("Analysis mode"); }

}  // namespace velicor
