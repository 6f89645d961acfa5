#include "platform/dispatch/main_queue.h"

#include <utility>

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

namespace velicor::dispatch {

// Turns "there is work" into one event of the toolkit's loop.
class MainQueue::EventLoopBell : public QObject {
 public:
  void ring() { QCoreApplication::postEvent(this, new QEvent(QEvent::User)); }

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
  jobs_.push_back(std::move(job));
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
  if (!jobs_.empty()) wake();
}

void MainQueue::detach() {
  const std::scoped_lock guard(mutex_);
  bell_.reset();
  ringing_ = false;
}

std::size_t MainQueue::runPending() {
  std::deque<Job> batch;
  {
    const std::scoped_lock guard(mutex_);
    batch.swap(jobs_);
    ringing_ = false;
  }
  for (Job& job : batch) {
    job();
    job = nullptr;  // what it captured goes before the next one runs
  }
  return batch.size();
}

bool MainQueue::isCurrent() const {
  const std::scoped_lock guard(mutex_);
  return std::this_thread::get_id() == thread_;
}

}  // namespace velicor::dispatch
