#pragma once

#include <deque>
#include <functional>
#include <memory>

#include <QCoroTask>

namespace velicor::dispatch {

// Runs asynchronous operations one after the other on the main thread: each begins on a later turn of the
// main queue than the one that enqueued it, and only when the one before has finished.
//
// Operations that have not begun when the chain is destroyed never run; one that runs goes on by itself, so
// it must not rely on its owner being alive.
class TaskChain {
 public:
  using Operation = std::function<QCoro::Task<>()>;

  TaskChain();
  ~TaskChain();
  TaskChain(const TaskChain&) = delete;
  TaskChain& operator=(const TaskChain&) = delete;

  // Main thread.
  void enqueue(Operation operation);

 private:
  struct State;
  static QCoro::Task<> run(std::shared_ptr<State> state);

  std::shared_ptr<State> state_;
};

}  // namespace velicor::dispatch
