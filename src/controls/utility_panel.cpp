#include "controls/utility_panel.h"

#include <utility>

#include <QKeyEvent>

#include "controls/label.h"
#include "controls/plain_button.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/desktop/panel_ground.h"

namespace velicor::controls {

namespace {

constexpr int panelLevel = 5;  // above the loupe and the scopes panel

constexpr int buttonLeft = 8;
constexpr TextStyle titleStyle{.size = 11, .weight = QFont::DemiBold, .color = TextColor::secondary};

// Takes the keys that the content has no use for.
class Ground : public desktop::PanelGround {
 public:
  using PanelGround::PanelGround;

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    if (event->key() != Qt::Key_Escape) return PanelGround::keyPressEvent(event);
    if (desktop::Panel* panel = desktop::Panel::of(this)) panel->orderOut();
  }
};

DesktopRect frameAround(const QWidget& content) {
  return {0, 0, static_cast<double>(content.width()),
          static_cast<double>(content.height() + UtilityPanel::titleHeight)};
}

void addTitle(QWidget& ground, const QString& text) {
  auto* title = new Label(text, titleStyle, TextFit::natural, &ground);
  title->setAlignment(Qt::AlignHCenter);
  // The mouse is for the strip below.
  title->setAttribute(Qt::WA_TransparentForMouseEvents);
  title->setGeometry(0, 0, ground.width(), UtilityPanel::titleHeight);
}

PlainButton& addCloseButton(QWidget& ground) {
  auto* button = makeTitleButton("close", QStringLiteral("Close"), &ground);
  button->setFocusPolicy(Qt::NoFocus);
  button->move(buttonLeft, (UtilityPanel::titleHeight - button->height()) / 2);
  return *button;
}

}  // namespace

UtilityPanel::UtilityPanel(desktop::Desktop& desktop, const QString& title, std::unique_ptr<QWidget> content)
    : Panel(desktop, desktop::PanelKind::managed, frameAround(*content)), content_(content.get()) {
  setTitle(title.toStdString());
  setLevel(panelLevel);
  setMovableByBackground(true);
  auto ground = std::make_unique<Ground>(desktop);
  ground->resize(content_->width(), content_->height() + titleHeight);
  content.release()->setParent(ground.get());
  content_->move(0, titleHeight);
  addTitle(*ground, title);
  addCloseButton(*ground).onClick = [this] { orderOut(); };
  setContentView(std::move(ground));
}

void UtilityPanel::centre() {
  const auto screen = desktop().screens().mainScreen();
  if (!screen) return;
  const DesktopRect& room = screen->visibleFrame;
  const DesktopRect& own = frame();
  setFrame({room.x + (room.width - own.width) / 2, room.y + (room.height - own.height) / 2, own.width,
            own.height});
}

void UtilityPanel::makeKeyAndOrderFront() {
  orderFront();
  makeKey();
  content_->setFocus();
}

}  // namespace velicor::controls
