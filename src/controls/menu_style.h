#pragma once

#include <QFont>
#include <QProxyStyle>

namespace velicor::controls {

// How menus of ours look: the panels' dark ground, a quiet highlight, our own check mark. Main thread.
class MenuStyle : public QProxyStyle {
 public:
  // Lives as long as the application object.
  static MenuStyle* shared();
  static QFont font();

  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                         const QWidget* widget) const override;
  int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* data) const override;

 private:
  MenuStyle();
};

}  // namespace velicor::controls
