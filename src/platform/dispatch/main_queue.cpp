#include "platform/dispatch/main_queue.h"

#include <utility>

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

#include "platform/base/recycling.h"

namespace velicor::dispatch {

namespace {

// The toolkit deletes events when they have been delivered; this one comes with every frame, and so in
// recycled memory.
class RingEvent : public QEvent {
 public:
  RingEvent() : QEvent(QEvent::User) {}
  static void* operator new(std::size_t) { return Recycling<RingEvent>().allocate(1); }
  static void operator delete(void* memory) {
    Recycling<RingEvent>().deallocate(static_cast<RingEvent*>(memory), 1);
  }
};

}  // namespace

// Turns "there is work" into one event of the toolkit's loop.
class MainQueue::EventLoopBell : public QObject {
 public:
  void ring() { QCoreApplication::postEvent(this, new RingEvent); }

 protected:
  bool event(QEvent* event) override {
    {
      // The event comes from another thread by way of the toolkit, which the thread sanitizer can't see into;
      // it was made under this lock.
      const std::scoped_lock guard(MainQueue::shared().mutex_);
    }
    if (event->type() != QEvent::User) return QObject::event(event);
    MainQueue::shared().runPending();
    return true;
  }
};

MainQueue::MainQueue() = default;
MainQueue::~MainQueue() = default;

MainQueue& MainQueue::shared() {
  static auto* const instance = new MainQueue;  // threads may queue until the process is gone
  return *instance;
}

void MainQueue::async(Job job) {
  const std::scoped_lock guard(mutex_);
  jobs_.push(std::move(job));
  wake();
}

void MainQueue::wake() {
  if (ringing_ || !bell_) return;
  ringing_ = true;
  bell_->ring();
}

void MainQueue::attach() {
  const std::scoped_lock guard(mutex_);
  thread_ = std::this_thread::get_id();
  bell_ = std::make_unique<EventLoopBell>();
  ringing_ = false;
  if (!jobs_.isEmpty()) wake();
}

void MainQueue::detach() {
  const std::scoped_lock guard(mutex_);
  bell_.reset();
  ringing_ = false;
}

std::size_t MainQueue::runPending() {
  std::size_t ran = 0;
  std::unique_lock guard(mutex_);
  for (std::size_t present = jobs_.size(); present > 0 && !jobs_.isEmpty(); --present, ++ran) {
    Job job = jobs_.pop();
    // The job may run an event loop of its own, a menu's for example: that serves the jobs after this one.
    ringing_ = false;
    if (!jobs_.isEmpty()) wake();
    guard.unlock();
    job();
    job = nullptr;  // what it captured goes before the next one runs
    guard.lock();
  }
  if (jobs_.isEmpty()) ringing_ = false;
  return ran;
}

bool MainQueue::isCurrent() const {
  const std::scoped_lock guard(mutex_);
  return std::this_thread::get_id() == thread_;
}

}  // namespace velicor::dispatch
