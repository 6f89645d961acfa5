#include "platform/screencapture/x11/mailbox.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

namespace velicor::screencapture {

namespace {

int makeEvent() {
  const int event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (event < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  return event;
}

}  // namespace

Mailbox::Mailbox() : event_(makeEvent()) {}

Mailbox::~Mailbox() { ::close(event_); }

bool Mailbox::post(Job job) {
  {
    const std::scoped_lock guard(mutex_);
    if (closed_) return false;
    jobs_.push_back(std::move(job));
  }
  wake();
  return true;
}

void Mailbox::wake() {
  // The counter can't overflow in the life of a process, so this never fails.
  eventfd_write(event_, 1);
}

std::vector<Mailbox::Job> Mailbox::takeAll() {
  eventfd_t count = 0;
  eventfd_read(event_, &count);
  const std::scoped_lock guard(mutex_);
  return std::exchange(jobs_, {});
}

void Mailbox::close() {
  const std::scoped_lock guard(mutex_);
  closed_ = true;
}

}  // namespace velicor::screencapture
