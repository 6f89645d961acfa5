#include "update/update_window.h"

#include <algorithm>
#include <memory>

#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QVBoxLayout>
#include <QWidget>

#include "controls/push_button.h"
#include "platform/base/product.h"
#include "platform/desktop/look.h"
#include "platform/desktop/screen.h"
#include "platform/desktop/toolkit_window.h"
#include "update/update_view.h"

namespace velicor {

namespace {

constexpr int contentHeight = 220;
constexpr int windowLevel = 5;

constexpr Qt::WindowFlags kind = Qt::Tool | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                 Qt::WindowCloseButtonHint | Qt::WindowStaysOnTopHint;

// As high as its content, from the usual height on; the rest is left to the title bar.
class Window : public QWidget {
 public:
  explicit Window(UpdateChecker& checker) : QWidget(nullptr, kind), view_(new UpdateView(checker, this)) {
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(QString::fromStdString(std::string(product::name) + " Update"));
    QPalette dark(look::panelGround);
    dark.setColor(QPalette::Window, look::panelGround);
    setPalette(dark);
    setAutoFillBackground(true);
    view_->onContentChange = [this] { fit(); };
    fit();
    desktop::toolkit::setLevel(*this, windowLevel);
  }

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    if (event->key() == Qt::Key_Escape) {
      close();
      return;
    }
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isReturn) return QWidget::keyPressEvent(event);
    // A key that is held down must not answer what only comes up meanwhile.
    if (!event->isAutoRepeat()) controls::PushButton::clickDefault(*this);
  }

 private:
  void fit() {
    const int height = std::max(contentHeight, view_->heightForWidth(UpdateView::layoutWidth));
    setFixedSize(UpdateView::layoutWidth, height);
    view_->setGeometry(rect());
  }

  UpdateView* const view_;
};

std::unique_ptr<Window>& stored() {
  static auto* const window = new std::unique_ptr<Window>;
  return *window;
}

void centre(QWidget& window, const desktop::ScreenList& screens) {
  const auto main = screens.mainScreen();
  const QScreen* screen =
      main ? desktop::toolkit::screenAt({main->deviceFrame.x, main->deviceFrame.y}) : nullptr;
  if (!screen) screen = QGuiApplication::primaryScreen();
  if (!screen) return;
  QRect place = window.rect();
  place.moveCenter(screen->availableGeometry().center());
  window.move(place.topLeft());
}

}  // namespace

void UpdateWindow::show() {
  std::unique_ptr<Window>& window = stored();
  if (!window) {
    UpdateChecker& checker = UpdateChecker::shared();
    window = std::make_unique<Window>(checker);
    centre(*window, checker.screens());
  }
  window->show();
  window->raise();
  window->activateWindow();
}

void UpdateWindow::close() {
  if (stored()) stored()->close();
}

QWidget* UpdateWindow::window() { return stored().get(); }

void UpdateWindow::discard() { stored().reset(); }

}  // namespace velicor
