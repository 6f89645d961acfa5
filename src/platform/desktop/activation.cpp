#include "platform/desktop/activation.h"

#include <QApplication>
#include <QEvent>

#include "platform/desktop/toolkit_window.h"

namespace velicor::desktop {

Activation::Activation() { qApp->installEventFilter(this); }

void Activation::setPolicy(ActivationPolicy policy) {
  policy_ = policy;
  if (representative_) apply(*representative_);
}

void Activation::setRepresentative(QWidget& window) {
  representative_ = &window;
  apply(window);
}

// The toolkit says so before it shows the window.
bool Activation::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Show && watched->isWidgetType()) {
    auto& widget = static_cast<QWidget&>(*watched);
    if (widget.isWindow()) apply(widget);
  }
  return QObject::eventFilter(watched, event);
}

void Activation::apply(QWidget& window) const {
  const bool listed = &window == representative_ && policy_ == ActivationPolicy::regular;
  toolkit::setInTaskbar(window, listed);
}

}  // namespace velicor::desktop
