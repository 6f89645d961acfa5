#include <cerrno>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/gpu/vulkan/instance.h"
#include "platform/gpu/vulkan/vulkan_device.h"
#include "platform/log/log.h"

namespace velicor::gpu {

namespace {

constexpr int patience = 3'000;  // milliseconds; the start waits for it

// Nothing may get out of here: the child would go on as the parent.
bool hasCandidates() noexcept {
  try {
    const auto instance = vulkan::Instance::make({});
    return instance && !instance->candidates(false).empty();
  } catch (...) {
    return false;
  }
}

// What the child says before it ends; none where it says nothing.
std::optional<bool> answerFrom(int pipe) {
  pollfd readable{pipe, POLLIN, 0};
  int ready = 0;
  do {
    ready = poll(&readable, 1, patience);
  } while (ready < 0 && errno == EINTR);
  char answer = 0;
  if (ready <= 0 || read(pipe, &answer, 1) != 1) return std::nullopt;
  return answer == 1;
}

}  // namespace

VulkanProbe::VulkanProbe() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return;
  child_ = fork();
  if (child_ == 0) {
    // No handler and no destructor of the parent's may run here.
    const char answer = hasCandidates() ? 1 : 0;
    _exit(write(ends[1], &answer, 1) == 1 ? 0 : 1);
  }
  close(ends[1]);
  pipe_ = ends[0];
}

VulkanProbe::~VulkanProbe() { end(); }

bool VulkanProbe::isWorthLoading() {
  if (answer_) return *answer_;
  if (child_ > 0) answer_ = answerFrom(pipe_);
  if (!answer_) log::Logger("gpu").error("the graphics drivers can't be asked: analysis runs without them");
  end();
  return answer_.emplace(answer_.value_or(false));
}

void VulkanProbe::end() {
  if (pipe_ >= 0) close(std::exchange(pipe_, -1));
  if (child_ <= 0) return;
  kill(child_, SIGKILL);
  while (waitpid(child_, nullptr, 0) < 0 && errno == EINTR) {
  }
  child_ = -1;
}

}  // namespace velicor::gpu
