#include "platform/desktop/application.h"

#include <algorithm>
#include <utility>

#include <QApplication>
#include <QEvent>
#include <QWidget>
#include <QWindow>

#include "platform/desktop/desktop.h"
#include "platform/desktop/toolkit_window.h"
#include "platform/desktop/window_stack.h"

namespace velicor::desktop {

namespace {

QWidget* widgetOf(const QWindow* window) {
  const QWidgetList all = QApplication::topLevelWidgets();
  const auto found =
      std::ranges::find_if(all, [window](const QWidget* widget) { return widget->windowHandle() == window; });
  return found == all.end() ? nullptr : *found;
}

}  // namespace

// The toolkit's own way to quit would close the windows first, and end where one of them does not want to.
void terminate() { QCoreApplication::exit(0); }

void beep() { QApplication::beep(); }

void setWindowLevel(Desktop& desktop, QWidget& window, int level) {
  toolkit::setLevel(window, level);
  desktop.windows().refreshSoon();
}

WindowObserver::WindowObserver(Handler handler) : handler_(std::move(handler)) {
  connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this](const QWindow* window) {
    QWidget* const widget = window ? widgetOf(window) : nullptr;
    if (widget) handler_(*widget);
  });
  qApp->installEventFilter(this);
}

bool WindowObserver::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Show && watched->isWidgetType()) {
    auto& widget = static_cast<QWidget&>(*watched);
    const bool transient = widget.windowType() == Qt::Popup || widget.windowType() == Qt::ToolTip;
    if (widget.isWindow() && transient) handler_(widget);
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace velicor::desktop
