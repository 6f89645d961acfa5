#include <chrono>
#include <functional>
#include <stdexcept>

#include "peers/loupe_stage.h"
#include "peers/rows.h"
#include "support/brief.h"

namespace velicor::benchmarks {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

const int rounds = unlessBrief(9, 1);
constexpr DevicePoint centre{stageWidth / 2, stageHeight / 2};
constexpr std::uint32_t colourBelow = 0xc02000;  // no skin: the loupe shows it in grey

bool isGrey(std::uint32_t colour) {
  return (colour & 0xff) == (colour >> 8 & 0xff) && (colour & 0xff) == colour >> 16;
}

// Milliseconds from now until the pixel in the middle of the screen is as wanted.
double timeUntil(const LoupeStage& stage, Clock::time_point start,
                 const std::function<bool(std::uint32_t)>& wanted) {
  while (!wanted(stage.pixelAt(centre))) {
    if (Clock::now() > start + 20s) throw std::runtime_error("nothing appears on the screen");
    std::this_thread::sleep_for(500us);
  }
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double ours(LoupeStage& stage) {
  const auto start = Clock::now();
  const test::RunningVelicor velicor({.display = stage.display()});
  return timeUntil(stage, start, isGrey);
}

double bareWindow(LoupeStage& stage) {
  const auto start = Clock::now();
  const test::Program bare({VELICOR_BARE_WINDOW}, stage.display());
  return timeUntil(stage, start, [](std::uint32_t colour) { return colour != colourBelow; });
}

}  // namespace

void addStartRow(Table& table) {
  LoupeStage stage;
  stage.client().lower(stage.client().showColour({centre.x - 300, centre.y - 300, 600, 600}, colourBelow));
  std::vector<double> velicor, bare, extra;
  for (int i = 0; i < rounds; ++i) {
    bare.push_back(bareWindow(stage));
    timeUntil(stage, Clock::now(), [](std::uint32_t colour) { return colour == colourBelow; });
    velicor.push_back(ours(stage));
    timeUntil(stage, Clock::now(), [](std::uint32_t colour) { return colour == colourBelow; });
    extra.push_back(velicor.back() - bare.back());
  }
  table.atMost("start to first analysed frame on the screen, beyond a bare window's", 250, " ms more",
               median(extra),
               rounded(median(extra), 0) + " ms more (ours " + rounded(median(velicor), 0) +
                   " ms, bare window " + rounded(median(bare), 0) + " ms)");
}

}  // namespace velicor::benchmarks
