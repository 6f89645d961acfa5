#include "platform/dispatch/serial_queue.h"

#include <future>
#include <utility>

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

namespace velicor::dispatch {

namespace {

constexpr int interactiveNice = -5;
constexpr std::size_t threadNameLimit = 15;

}  // namespace

SerialQueue::SerialQueue(std::string label, Priority priority) : label_(std::move(label)), priority_(priority) {
  thread_ = std::thread([this] { run(); });
}

SerialQueue::~SerialQueue() {
  {
    const std::scoped_lock guard(mutex_);
    ending_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void SerialQueue::async(Job job) {
  {
    const std::scoped_lock guard(mutex_);
    jobs_.push(std::move(job));
  }
  changed_.notify_one();
}

void SerialQueue::drain() {
  std::promise<void> reached;
  async([&reached] { reached.set_value(); });
  reached.get_future().wait();
}

void SerialQueue::run() {
  pthread_setname_np(pthread_self(), label_.substr(0, threadNameLimit).c_str());
  if (priority_ == Priority::userInteractive) {
    // Refused for ordinary users without a nice limit: the queue then runs at the normal priority.
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), interactiveNice);
  }
  std::unique_lock guard(mutex_);
  while (true) {
    changed_.wait(guard, [this] { return ending_ || !jobs_.isEmpty(); });
    if (jobs_.isEmpty()) return;
    Job job = jobs_.pop();
    guard.unlock();
    job();
    job = nullptr;
    guard.lock();
  }
}

SerialQueue& backgroundQueue() {
  static auto* const queue = new SerialQueue("velicor.backgnd");  // whoever exits does not wait for it
  return *queue;
}

}  // namespace velicor::dispatch
