#include "controls/tooltips.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleOption>
#include <QToolTip>

#include "controls/drawing.h"
#include "platform/desktop/look.h"
#include "platform/desktop/typeface.h"

namespace velicor::controls {

namespace {

// The toolkit draws the border in the colour of the text, which on a dark ground is a glaring one.
class Style : public QProxyStyle {
 public:
  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
    if (element != PE_PanelTipLabel) return QProxyStyle::drawPrimitive(element, option, painter, widget);
    const QRectF rect = option->rect;
    const double line = pixelWidth(*painter, 1);
    painter->fillRect(rect, look::panelGround);
    painter->fillRect(rect, look::white(0.2));
    painter->fillRect(rect.adjusted(line, line, -line, -line), look::panelGround);
  }
};

}  // namespace

void dressTooltips() {
  QApplication::setStyle(new Style);
  QPalette colours = QToolTip::palette();
  colours.setColor(QPalette::ToolTipBase, look::panelGround);
  colours.setColor(QPalette::ToolTipText, look::primaryText);
  QToolTip::setPalette(colours);
  QToolTip::setFont(desktop::interfaceFont(11));
}

}  // namespace velicor::controls
