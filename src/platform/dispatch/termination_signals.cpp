#include "platform/dispatch/termination_signals.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include <QObject>
#include <QSocketNotifier>

namespace velicor::dispatch {

namespace {

constexpr std::array numbers{SIGTERM, SIGINT, SIGHUP};

std::atomic<int> pipeEnd{-1};

// All that may be done inside a signal handler: a byte that wakes the event loop.
void ring(int /*signal*/) {
  const int savedError = errno;
  const char byte = 1;
  [[maybe_unused]] const ssize_t written = write(pipeEnd, &byte, 1);
  errno = savedError;
}

void handleBy(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  for (const int number : numbers) sigaction(number, &action, nullptr);
}

}  // namespace

TerminationSignals::TerminationSignals() {
  // Without the pipe the signals keep their default: the program ends at once, which is still an end.
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
  readEnd_ = ends[0];
  writeEnd_ = ends[1];
  pipeEnd = writeEnd_;
  handleBy(ring);
}

TerminationSignals::~TerminationSignals() {
  notifier_.reset();
  if (readEnd_ < 0) return;
  handleBy(SIG_DFL);
  pipeEnd = -1;
  close(readEnd_);
  close(writeEnd_);
}

void TerminationSignals::deliverTo(Job job) {
  if (readEnd_ < 0) return;
  notifier_ = std::make_unique<QSocketNotifier>(readEnd_, QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this, job = std::move(job)] {
    char byte = 0;
    while (read(readEnd_, &byte, 1) == 1) job();
  });
}

}  // namespace velicor::dispatch
