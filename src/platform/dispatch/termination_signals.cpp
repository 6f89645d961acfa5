#include "platform/dispatch/termination_signals.h"

#include <csignal>
#include <utility>

#include <sys/signalfd.h>
#include <unistd.h>

#include <QObject>
#include <QSocketNotifier>

namespace velicor::dispatch {

TerminationSignals::TerminationSignals() {
  sigset_t numbers;
  sigemptyset(&numbers);
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&numbers, number);
  // Without the descriptor the signals keep their default: the program ends at once, which is still an end.
  descriptor_ = signalfd(-1, &numbers, SFD_CLOEXEC | SFD_NONBLOCK);
  if (descriptor_ >= 0) pthread_sigmask(SIG_BLOCK, &numbers, nullptr);
}

TerminationSignals::~TerminationSignals() {
  notifier_.reset();
  if (descriptor_ >= 0) close(descriptor_);
}

void TerminationSignals::deliverTo(Job job) {
  if (descriptor_ < 0) return;
  notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this, job = std::move(job)] {
    signalfd_siginfo info{};
    while (read(descriptor_, &info, sizeof info) == sizeof info) job();
  });
}

}  // namespace velicor::dispatch
