#include <fstream>
#include <stdexcept>

#include <QTemporaryDir>

#include "peers/ffmpeg.h"
#include "peers/loupe_stage.h"
#include "peers/process_usage.h"
#include "peers/rows.h"
#include "support/brief.h"

namespace velicor::benchmarks {

namespace {

using namespace std::chrono_literals;

const int rounds = unlessBrief(3, 1);
const auto warmUp = unlessBrief(3s, 1s);
const auto period = unlessBrief(8s, 1s);

// Shares of one core.
struct Load {
  double program = 0;
  double server = 0;
  double sum() const { return program + server; }
};

// What the process (none: nobody) and the server spend over the period.
Load loadOver(LoupeStage& stage, pid_t process) {
  const auto cpuOf = [](pid_t id) { return id > 0 ? cpuSeconds(id) : 0; };
  std::this_thread::sleep_for(warmUp);
  const auto start = std::chrono::steady_clock::now();
  const double program = cpuOf(process), server = cpuOf(stage.serverProcess());
  std::this_thread::sleep_for(period);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return {(cpuOf(process) - program) / seconds, (cpuOf(stage.serverProcess()) - server) / seconds};
}

// Grabs the region 30 times a second, does with it what an analysis does, and displays each result in a
// window of its own beside the region, drawn in software.
class GrabbingPeer {
 public:
  explicit GrabbingPeer(const std::string& display)
      : progress_(folder_.filePath("progress").toStdString()),
        program_(arguments(display, progress_), display) {}

  pid_t processID() const { return program_.processID(); }

  // How many frames it has displayed.
  int frames() const {
    int last = 0;
    std::ifstream lines(progress_);
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("frame=")) last = std::stoi(line.substr(6));
    }
    return last;
  }

 private:
  static std::vector<std::string> arguments(const std::string& display, const std::string& progress) {
    const auto number = [](int value) { return std::to_string(value); };
    std::vector<std::string> result{"env",
                                    "SDL_RENDER_DRIVER=software",
                                    "ffmpeg",
                                    "-nostdin",
                                    "-progress",
                                    progress,
                                    "-f",
                                    "x11grab",
                                    "-framerate",
                                    "30",
                                    "-draw_mouse",
                                    "0",
                                    "-video_size",
                                    number(region.width) + "x" + number(region.height),
                                    "-i",
                                    display + "+" + number(region.x) + "," + number(region.y),
                                    "-filter_complex",
                                    ffmpegGraph};
    const std::pair<const char*, DevicePoint> windows[] = {
        {"[p]", {800, 40}}, {"[v]", {1500, 40}}, {"[w]", {40, 560}}};
    for (const auto& [label, corner] : windows) {
      result.insert(result.end(), {"-map", label, "-pix_fmt", "yuv420p", "-f", "sdl2", "-window_x",
                                   number(corner.x), "-window_y", number(corner.y), label});
    }
    return result;
  }

  QTemporaryDir folder_;
  std::string progress_;
  test::Program program_;
};

struct Round {
  Load scene;  // without anybody
  Load ours;
  Load theirs;
  Memory memory;
};

Load peerLoad(LoupeStage& stage) {
  const GrabbingPeer peer(stage.display());
  return loadOver(stage, peer.processID());
}

Round measureRound() {
  LoupeStage stage;
  const MovingPicture picture(stage.display());
  Round round;
  round.scene = loadOver(stage, 0);
  {
    const LoupeOnStage velicor(stage);
    round.ours = loadOver(stage, velicor.processID());
    round.memory = memoryOf(velicor.processID());
  }
  round.theirs = peerLoad(stage);
  round.ours.server -= round.scene.server;
  round.theirs.server -= round.scene.server;
  return round;
}

Memory bareWindowMemory() {
  LoupeStage stage;
  const test::Program bare({VELICOR_BARE_WINDOW}, stage.display());
  std::this_thread::sleep_for(warmUp);
  return memoryOf(bare.processID());
}

}  // namespace

void addWorkRows(Table& table) {
  std::vector<double> sums, programs, servers, theirs, shares, resident, proportional, bareResident,
      bareProportional;
  for (int i = 0; i < rounds; ++i) {
    const Round round = measureRound();
    sums.push_back(round.ours.sum() * 100);
    programs.push_back(round.ours.program * 100);
    servers.push_back(round.ours.server * 100);
    theirs.push_back(round.theirs.sum() * 100);
    shares.push_back(round.theirs.sum() / round.ours.sum());
    resident.push_back(round.memory.resident);
    proportional.push_back(round.memory.proportional);
    const Memory bare = bareWindowMemory();
    bareResident.push_back(bare.resident);
    bareProportional.push_back(bare.proportional);
  }
  const char* const work =
      "whole program at 30 frames a second, 640 × 400, every frame changing, both panels shown, "
      "no compositor";
  table.atMost(std::string(work) + ": processor time, with what the X server spends beyond the scene", 8,
               " % of one core", median(sums),
               rounded(median(sums), 1) + " % (ours " + rounded(median(programs), 1) + " %, server " +
                   rounded(median(servers), 1) + " %)");
  table.atLeast(std::string(work) + ": beside ffmpeg that grabs, analyses and displays", 5, " times less",
                median(shares),
                rounded(median(shares), 1) + " times less (ffmpeg " + rounded(median(theirs), 1) + " %)");
  const double ratio = median(resident) / median(bareResident);
  const double proportionalRatio = median(proportional) / median(bareProportional);
  table.atMost("memory at that work beside a bare window's, resident", 1.5, " times", ratio,
               rounded(ratio, 2) + " (" + rounded(median(resident), 1) + " MiB, bare window " +
                   rounded(median(bareResident), 1) + " MiB; proportional " + rounded(proportionalRatio, 2) +
                   ": " + rounded(median(proportional), 1) + " and " + rounded(median(bareProportional), 1) +
                   " MiB)");
}

}  // namespace velicor::benchmarks
