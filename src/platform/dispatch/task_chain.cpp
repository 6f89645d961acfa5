#include "platform/dispatch/task_chain.h"

#include <utility>

#include "platform/dispatch/completion.h"
#include "platform/dispatch/main_queue.h"

namespace velicor::dispatch {

struct TaskChain::State {
  std::deque<Operation> waiting;
  bool running = false;
};

TaskChain::TaskChain() : state_(std::make_shared<State>()) {}

TaskChain::~TaskChain() { state_->waiting.clear(); }

void TaskChain::enqueue(Operation operation) {
  state_->waiting.push_back(std::move(operation));
  if (!std::exchange(state_->running, true)) run(state_);
}

QCoro::Task<> TaskChain::run(std::shared_ptr<State> state) {
  while (!state->waiting.empty()) {
    Completion<void> nextTurn;
    nextTurn.resolve();
    co_await nextTurn;
    if (state->waiting.empty()) break;
    const Operation operation = std::move(state->waiting.front());
    state->waiting.pop_front();
    co_await operation();
  }
  state->running = false;
}

}  // namespace velicor::dispatch
