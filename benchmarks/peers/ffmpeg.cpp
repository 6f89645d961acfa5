#include "peers/ffmpeg.h"

#include <stdexcept>

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velicor::benchmarks {

const char* const ffmpegGraph =
    "split=3[a][b][c];"
    "[a]format=yuv444p,vectorscope[v];"
    "[b]format=gbrp,waveform=display=parade:components=7[w];"
    "[c]format=yuv444p,pseudocolor=preset=turbo[p]";

double cpuOfFfmpeg(const std::vector<std::string>& arguments) {
  std::vector<std::string> command{"ffmpeg", "-v", "error", "-nostdin"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& word : command)
    pointers.push_back(word.data());
  pointers.push_back(nullptr);
  pid_t process = -1;
  if (posix_spawnp(&process, "ffmpeg", nullptr, nullptr, pointers.data(), environ) != 0) {
    throw std::runtime_error("can't start ffmpeg");
  }
  int status = 0;
  rusage used{};
  if (wait4(process, &status, 0, &used) != process || status != 0) throw std::runtime_error("ffmpeg failed");
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(used.ru_utime) + seconds(used.ru_stime);
}

}  // namespace velicor::benchmarks
