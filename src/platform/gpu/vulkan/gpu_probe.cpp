#include <cerrno>
#include <optional>

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

constexpr int patience = 10'000;  // milliseconds; drivers that have to be read from a slow disk take long

bool hasCandidates() {
  try {
    const auto instance = vulkan::Instance::make({});
    return instance && !instance->candidates(false).empty();
  } catch (const vk::SystemError&) {
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

bool isVulkanWorthLoading() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return false;
  const pid_t child = fork();
  if (child == 0) {
    // No handler and no destructor of the parent's may run here.
    const char answer = hasCandidates() ? 1 : 0;
    _exit(write(ends[1], &answer, 1) == 1 ? 0 : 1);
  }
  close(ends[1]);
  std::optional<bool> answer;
  if (child > 0) {
    answer = answerFrom(ends[0]);
    kill(child, SIGKILL);
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  close(ends[0]);
  if (!answer) log::Logger("gpu").error("the graphics drivers can't be asked: analysis runs without them");
  return answer.value_or(false);
}

}  // namespace velicor::gpu
