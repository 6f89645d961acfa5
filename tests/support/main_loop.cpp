#include "support/main_loop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>

#include "platform/dispatch/main_queue.h"

namespace velicor::test {

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  const QDeadlineTimer deadline(limit);
  while (!condition()) {
    if (deadline.hasExpired()) return false;
    // A short wait inside the loop: an event ends it at once, the condition is looked at again in any case.
    QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
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
