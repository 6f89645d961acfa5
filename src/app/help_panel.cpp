#include "app/help_panel.h"

#include <string>
#include <string_view>

#include <QGridLayout>

#include "app/gestures.h"
#include "controls/label.h"
#include "menubar/hot_key.h"
#include "platform/base/product.h"

namespace velicor {

namespace {

using controls::Label;
using controls::TextColor;
using controls::TextFit;

constexpr QMargins margins(24, 6, 24, 20);
constexpr int howWidth = 196;
constexpr int whatWidth = 256;
constexpr int columnGap = 14;
constexpr int rowGap = 5;
constexpr int groupGap = 6;  // above a group's title, besides the gaps between rows

constexpr controls::TextStyle placeStyle{.size = 11, .weight = QFont::DemiBold, .color = TextColor::accent};
constexpr controls::TextStyle howStyle{.size = 11, .weight = QFont::Medium};
constexpr controls::TextStyle whatStyle{.size = 11, .color = TextColor::secondary};

QString howOf(const Gesture& gesture) {
  if (gesture.how != globalShortcut) return QString::fromUtf8(gesture.how);
  const HotKey& key = HotKey::shared();
  return QString::fromStdString(HotKey::displayString(key.keyCode(), key.modifiers()));
}

Label* column(const QString& words, const controls::TextStyle& style, int width) {
  auto* label = new Label(words, style, TextFit::wrap);
  label->setFixedWidth(width);
  return label;
}

}  // namespace

class HelpPanel::Content : public QWidget {
 public:
  Content() : grid_(new QGridLayout(this)) {
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(QStringLiteral("Keys and mouse"));
    grid_->setContentsMargins(margins);
    grid_->setHorizontalSpacing(columnGap);
    grid_->setVerticalSpacing(rowGap);
    for (const GestureGroup& group : gestureGroups()) add(group);
    const int width = margins.left() + howWidth + columnGap + whatWidth + margins.right();
    setFixedSize(width, grid_->totalHeightForWidth(width));
  }

 private:
  void add(const GestureGroup& group) {
    if (grid_->count() > 0) grid_->addItem(new QSpacerItem(0, groupGap), grid_->rowCount(), 0);
    grid_->addWidget(new Label(QString::fromUtf8(group.place), placeStyle), grid_->rowCount(), 0, 1, 2);
    for (const Gesture& gesture : group.gestures) {
      const int row = grid_->rowCount();
      grid_->addWidget(column(howOf(gesture), howStyle, howWidth), row, 0, Qt::AlignTop);
      grid_->addWidget(column(QString::fromUtf8(gesture.what), whatStyle, whatWidth), row, 1, Qt::AlignTop);
    }
  }

  QGridLayout* const grid_;
};

HelpPanel::HelpPanel(desktop::Desktop& desktop) : desktop_(desktop) {}

std::unique_ptr<controls::UtilityPanel> HelpPanel::make() {
  const QString title = QString::fromUtf8(product::name) + QStringLiteral(" Keys");
  return std::make_unique<controls::UtilityPanel>(desktop_, title, std::make_unique<Content>());
}

// Made anew each time that it comes: the shortcut may be another one.
void HelpPanel::show() {
  if (!panel_ || !panel_->isVisible()) {
    panel_ = make();
    panel_->centre();
  }
  panel_->makeKeyAndOrderFront();
}

}  // namespace velicor
