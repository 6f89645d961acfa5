#include "menubar/recorder_view.h"

#include <bit>
#include <cmath>
#include <optional>

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QPainter>

#include "menubar/hot_key.h"
#include "platform/desktop/application.h"
#include "platform/desktop/look.h"
#include "platform/desktop/typeface.h"
#include "platform/hotkeys/key_codes.h"

namespace velicor {

namespace {

constexpr std::uint32_t escapeKeyCode = 53;
constexpr int fewestModifiers = 2;

// From the lower left corner of the view.
constexpr double headingBottom = 92;
constexpr double bodyLeft = 24;
constexpr double bodyBottom = 26;
constexpr double bodyHeight = 56;

QString heading() { return QStringLiteral("Press the new shortcut"); }

QString body() {
  const HotKey& hotKey = HotKey::shared();
  return QStringLiteral("Current: ") +
         QString::fromStdString(HotKey::displayString(hotKey.keyCode(), hotKey.modifiers())) +
         QStringLiteral("\nUse at least two modifiers (⌘ ⌥ ⌃ ⇧). Esc restores the default.");
}

bool isModifierKey(int key) {
  switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_Mode_switch:
      return true;
    default:
      return false;
  }
}

// By its place, or by its name for those who have put it elsewhere.
bool isEscape(const QKeyEvent& event, std::optional<std::uint32_t> keyCode) {
  return keyCode == escapeKeyCode || event.key() == Qt::Key_Escape;
}

}  // namespace

RecorderView::RecorderView(QWidget* parent) : QWidget(parent) {
  setFocusPolicy(Qt::StrongFocus);
  displayChanges_ = HotKey::shared().displayChanged.subscribe([this] { update(); });
}

void RecorderView::keyDown(const QKeyEvent& event) {
  if (isModifierKey(event.key())) return;
  const auto keyCode = hotkeys::keyCodeOf(event.nativeScanCode());
  if (isEscape(event, keyCode)) {
    const auto reset = onReset;
    if (reset) reset();
    return;
  }
  const std::uint32_t modifiers = HotKey::carbonModifiers(event.modifiers());
  if (!keyCode || std::popcount(modifiers) < fewestModifiers) return desktop::beep();
  const auto capture = onCapture;
  if (capture) capture(*keyCode, modifiers);
}

bool RecorderView::event(QEvent* event) {
  switch (event->type()) {
    case QEvent::ShortcutOverride:  // else the key would go to a command that has it as its shortcut
      event->accept();
      return true;
    case QEvent::KeyPress: {
      // Taken before the toolkit looks for Tab in it. A key that is held down was judged when it went down.
      const auto& press = static_cast<const QKeyEvent&>(*event);
      event->accept();
      if (!press.isAutoRepeat()) keyDown(press);
      return true;
    }
    default:
      return QWidget::event(event);
  }
}

void RecorderView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const auto snapped = [scale = devicePixelRatioF()](double place) {
    return std::round(place * scale) / scale;
  };

  painter.setFont(desktop::interfaceFont(15, QFont::DemiBold));
  painter.setPen(look::primaryText);
  const QFontMetricsF metrics(painter.font());
  const double left = width() / 2.0 - metrics.horizontalAdvance(heading()) / 2;
  painter.drawText(QPointF(left, snapped(height() - headingBottom - metrics.descent())), heading());

  painter.setFont(desktop::interfaceFont(11));
  painter.setPen(look::secondaryText);
  painter.drawText(QRectF(bodyLeft, height() - bodyBottom - bodyHeight, width() - 2 * bodyLeft, bodyHeight),
                   Qt::TextWordWrap | Qt::AlignHCenter, body());
}

QString RecorderView::accessibleText() const { return heading() + QLatin1Char('\n') + body(); }

}  // namespace velicor
