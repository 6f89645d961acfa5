#include "platform/gpu/vulkan/engine.h"

#include <chrono>
#include <string>
#include <thread>
#include <utility>

#include "platform/gpu/command_buffer.h"
#include "platform/gpu/vulkan/frames.h"
#include "platform/log/log.h"

namespace velicor::gpu::vulkan {

namespace {

// A wait that fails for want of memory says nothing about the work: it may well be under way.
void awaitEnd(const Flight& flight) {
  while (true) {
    try {
      return flight.await();
    } catch (const vk::DeviceLostError&) {
      throw;
    } catch (const vk::SystemError&) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
}

}  // namespace

std::unique_ptr<Engine> Engine::make(VulkanOptions options) {
  ContextRef context = DeviceContext::make(options);
  return context ? std::make_unique<Engine>(std::move(options), std::move(context)) : nullptr;
}

Engine::Engine(VulkanOptions options, ContextRef context)
    : options_(std::move(options)), context_(std::move(context)) {}

ContextRef Engine::context() const {
  const std::scoped_lock guard(mutex_);
  return context_;
}

// None where the device was lost since the work was begun: it would read what has no contents in the next
// one.
ContextRef Engine::contextOf(const CommandBuffer& commands) const {
  const std::scoped_lock guard(mutex_);
  return commands.lossCount() == lossCount_ ? context_ : nullptr;
}

std::unique_ptr<Flight> Engine::launch(const Submission& submission) {
  const ContextRef context = contextOf(*submission.commandBuffer);
  if (!context) return nullptr;
  try {
    auto flight = takeFlight(context);
    recorder_.record(*submission.recording, *flight);
    flight->submit();
    recorder_.keep();
    complained_ = false;
    return flight;
  } catch (const vk::DeviceLostError&) {
    lose();
  } catch (const FrameGone&) {
    // The device was rebuilt since the frame came in; the next one is on its way.
  } catch (const vk::SystemError& error) {
    complain(error.what());
  }
  recorder_.rollBack();
  return nullptr;
}

bool Engine::land(std::unique_ptr<Flight> flight) {
  try {
    awaitEnd(*flight);
  } catch (const vk::DeviceLostError&) {
    lose();
    return false;
  }
  reportTimes(*flight);
  const std::scoped_lock guard(mutex_);
  if (flight->context() == context_) idleFlights_.push_back(std::move(flight));
  return true;
}

void Engine::reportTimes(const Flight& flight) const {
  try {
    if (const auto times = flight.passTimes(); !times.empty()) options_.onPassTimes(times);
  } catch (const vk::SystemError&) {
    // The work is done all the same; this once nobody knows how long it took.
  }
}

bool Engine::rebuild() {
  ContextRef made = DeviceContext::make(options_);
  const std::scoped_lock guard(mutex_);
  context_ = std::move(made);
  return context_ != nullptr;
}

std::unique_ptr<Flight> Engine::takeFlight(const ContextRef& context) {
  {
    const std::scoped_lock guard(mutex_);
    if (!idleFlights_.empty()) {
      auto flight = std::move(idleFlights_.back());
      idleFlights_.pop_back();
      return flight;
    }
  }
  return std::make_unique<Flight>(context, options_.onPassTimes != nullptr);
}

void Engine::lose() {
  std::vector<std::unique_ptr<Flight>> gone;
  const std::scoped_lock guard(mutex_);
  gone.swap(idleFlights_);
  if (!context_) return;
  log::Logger("gpu").error(context_->name() + " was lost");
  context_ = nullptr;
  ++lossCount_;
}

void Engine::complain(const char* what) {
  if (!std::exchange(complained_, true)) log::Logger("gpu").error(std::string("work was dropped: ") + what);
}

}  // namespace velicor::gpu::vulkan
