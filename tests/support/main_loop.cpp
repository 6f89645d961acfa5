#include "support/main_loop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include "platform/dispatch/main_queue.h"

namespace velicor::test {

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  const QDeadlineTimer deadline(limit);
  QTimer wake;  // the condition is looked at again in any case
  wake.start(5);
  while (!condition()) {
    if (deadline.hasExpired()) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  return true;
}

void settle() {
  do {
    QCoreApplication::processEvents();
  } while (dispatch::MainQueue::shared().runPending() > 0);
}

}  // namespace velicor::test
