#pragma once

#include <memory>

#include "platform/dispatch/main_queue.h"

class QSocketNotifier;

namespace velicor::dispatch {

// Turns the signals that ask a program to end (SIGTERM, SIGINT, SIGHUP) into a call on the main thread. Programs
// that we start get them as usual. One at a time.
class TerminationSignals {
 public:
  TerminationSignals();
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

  // Main thread, with a QCoreApplication. The job runs once for every signal, also for one that came before.
  void deliverTo(Job job);

 private:
  int readEnd_ = -1;
  int writeEnd_ = -1;
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace velicor::dispatch
