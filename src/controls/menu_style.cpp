#include "controls/menu_style.h"

#include <cmath>

#include <QApplication>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QStyleOptionMenuItem>
#include <QWidget>

#include "controls/drawing.h"
#include "platform/desktop/continuous_corners.h"
#include "platform/desktop/look.h"
#include "platform/desktop/typeface.h"

namespace velicor::controls {

namespace {

constexpr int margin = 5;
constexpr int rowHeight = 24;
constexpr int separatorHeight = 11;
constexpr int checkColumn = 24;
constexpr int rightPadding = 14;
constexpr int shortcutGap = 20;
constexpr double cornerRadius = 8;
constexpr double highlightRadius = 4;

const QStyleOptionMenuItem* menuItem(const QStyleOption* option) {
  return qstyleoption_cast<const QStyleOptionMenuItem*>(option);
}

bool isSelected(const QStyleOption& option) {
  return option.state.testFlag(QStyle::State_Selected) && option.state.testFlag(QStyle::State_Enabled);
}

void drawStroke(QPainter& painter, const QPolygonF& line, const QColor& color) {
  painter.setPen(QPen(color, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPolyline(line);
}

void drawText(QPainter& painter, const QRectF& row, const QString& text, Qt::Alignment side, const QColor& color) {
  const QFontMetricsF metrics(painter.font());
  const double scale = painter.device()->devicePixelRatio();
  const double baseline = std::round((row.center().y() + metrics.capHeight() / 2) * scale) / scale;
  const double left = side == Qt::AlignRight ? row.right() - metrics.horizontalAdvance(text) : row.left();
  painter.setPen(color);
  painter.drawText(QPointF(left, baseline), text);
}

void drawHeading(QPainter& painter, const QRectF& row, const QString& title) {
  painter.setFont(desktop::interfaceFont(11, QFont::DemiBold));
  drawText(painter, row.adjusted(checkColumn, 0, 0, 0), title, Qt::AlignLeft, look::tertiaryText);
}

void drawSeparator(QPainter& painter, const QRectF& row) {
  const double width = pixelWidth(painter, 1);
  const QRectF line(row.left() + 8, row.center().y() - width / 2, row.width() - 16, width);
  painter.fillRect(pixelAligned(painter, line), look::white(0.12));
}

void drawItem(QPainter& painter, const QStyleOptionMenuItem& item) {
  const QRectF row = item.rect;
  const bool isDivision = item.menuItemType == QStyleOptionMenuItem::Separator;
  if (isDivision) return item.text.isEmpty() ? drawSeparator(painter, row) : drawHeading(painter, row, item.text);
  const bool enabled = item.state.testFlag(QStyle::State_Enabled);
  const QColor color = enabled ? look::primaryText : look::white(0.35);
  if (isSelected(item)) {
    painter.fillPath(desktop::continuousCorners(row, highlightRadius), look::white(0.14));
  }
  if (item.checked && item.checkType != QStyleOptionMenuItem::NotCheckable) {
    const QPointF middle(row.left() + checkColumn / 2.0, row.center().y());
    drawStroke(painter, QPolygonF({middle + QPointF(-4, 0.5), middle + QPointF(-1.25, 3.25), middle + QPointF(4, -3.5)}),
               enabled ? look::accent : color);
  }
  const QString title = item.text.section(QLatin1Char('\t'), 0, 0).replace(QLatin1String("&&"), QLatin1String("&"));
  const QString shortcut = item.text.section(QLatin1Char('\t'), 1);
  const QRectF texts = row.adjusted(checkColumn, 0, -rightPadding, 0);
  drawText(painter, texts, title, Qt::AlignLeft, color);
  drawText(painter, texts, shortcut, Qt::AlignRight, enabled ? look::tertiaryText : color);
  if (item.menuItemType == QStyleOptionMenuItem::SubMenu) {
    const QPointF tip(row.right() - rightPadding + 2, row.center().y());
    drawStroke(painter, QPolygonF({tip + QPointF(-4, -4), tip, tip + QPointF(-4, 4)}), look::tertiaryText);
  }
}

}  // namespace

MenuStyle::MenuStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

MenuStyle* MenuStyle::shared() {
  static QPointer<MenuStyle> style;
  if (!style) {
    style = new MenuStyle;
    style->setParent(qApp);
  }
  return style;
}

QFont MenuStyle::font() { return desktop::interfaceFont(13); }

void MenuStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                            const QWidget* widget) const {
  if (element == CE_MenuEmptyArea) return;
  const QStyleOptionMenuItem* const item = element == CE_MenuItem ? menuItem(option) : nullptr;
  if (!item) return QProxyStyle::drawControl(element, option, painter, widget);
  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  painter->setFont(font());
  drawItem(*painter, *item);
  painter->restore();
}

// Square where the window has no alpha to round its corners with.
void MenuStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
  if (element == PE_FrameMenu) return;
  if (element != PE_PanelMenu) return QProxyStyle::drawPrimitive(element, option, painter, widget);
  const bool round = widget && widget->testAttribute(Qt::WA_TranslucentBackground);
  const double radius = round ? cornerRadius : 0;
  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  painter->fillPath(desktop::continuousCorners(option->rect, radius), look::panelGround);
  painter->fillPath(continuousBorder(option->rect, radius, pixelWidth(*painter, 1)), look::white(0.14));
  painter->restore();
}

QSize MenuStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                  const QWidget* widget) const {
  const QStyleOptionMenuItem* const item = type == CT_MenuItem ? menuItem(option) : nullptr;
  if (!item) return QProxyStyle::sizeFromContents(type, option, size, widget);
  const bool isSeparator = item->menuItemType == QStyleOptionMenuItem::Separator && item->text.isEmpty();
  if (isSeparator) return {1, separatorHeight};
  const int gap = item->reservedShortcutWidth > 0 ? shortcutGap : 0;
  return {size.width() + checkColumn + gap + rightPadding, rowHeight};
}

int MenuStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
  switch (metric) {
    case PM_MenuHMargin:
    case PM_MenuVMargin:
      return margin;
    case PM_MenuPanelWidth:
    case PM_SubMenuOverlap:
      return 0;
    default:
      return QProxyStyle::pixelMetric(metric, option, widget);
  }
}

int MenuStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                         QStyleHintReturn* data) const {
  if (hint == SH_UnderlineShortcut || hint == SH_Menu_FlashTriggeredItem) return 0;
  return QProxyStyle::styleHint(hint, option, widget, data);
}

}  // namespace velicor::controls
