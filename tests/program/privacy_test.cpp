// What the program leaves behind: no file but its own, no word to anyone but those it must speak to, and
// nothing of the screen in its memory once the loupe is hidden.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <span>

#include <fcntl.h>
#include <unistd.h>

#include "program/stage.h"
#include "program/status_area.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

using testing::AnyOf;
using testing::HasSubstr;

constexpr QColor panelColor(0x1E, 0x1E, 0x1E);
constexpr DevicePoint panelGround{928, 770};
constexpr DevicePoint exposureTab{1209, 71};

void strikeShortcut(Stage& stage) { stage.mouse().strike({key::control, key::alt, key::super, key::s}); }

// ---- What it asks of the system

std::vector<std::string> linesOf(const std::string& file) {
  std::vector<std::string> lines;
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

// Whether the call makes, changes, moves or removes a file. What failed has done nothing.
bool changesFiles(const std::string& call) {
  static const std::regex changing(
      R"(\b(creat|mkdir|mkdirat|rename\w*|unlink\w*|rmdir|symlink\w*|link\w*|truncate|mknod\w*|fchmod\w*|chmod)\()"
      R"(|\bopen(at)?\(.*\bO_(WRONLY|RDWR|CREAT)\b)");
  return call.find(") = -1 E") == std::string::npos && std::regex_search(call, changing);
}

TEST(PrivacyTest, NoFileIsWrittenButTheSettingsAndNobodyIsSpokenToWhoNeedNotBe) {
  Stage stage(Surroundings::windowManager);
  const SessionBus bus;
  const QTemporaryDir folder;
  // A file for each thread: in a common one the calls lie in pieces.
  const std::string trace = folder.filePath("trace").toStdString();
  Launch launch = stage.launch();
  launch.withSettings = false;
  launch.under = {
      "strace", "-D", "-ff", "-y", "-qq", "-s", "4096", "-o", trace, "-e", "trace=%file,%network,fchmod"};
  launch.environment = {bus.environment(),
                        "ASAN_OPTIONS=detect_leaks=0"};  // which would want to trace it as well
  RunningVelicor velicor(launch);
  ASSERT_TRUE(stage.shows(panelGround, panelColor)) << velicor.log();
  ASSERT_TRUE(velicor.waitForLog("capture running")) << velicor.log();
  ASSERT_TRUE(velicor.waitForLog("update check failed")) << velicor.log();
  stage.mouse().click(exposureTab);
  ASSERT_TRUE(waitUntil([&] { return velicor.settings().find("\"mode\": 2") != std::string::npos; }));
  for (int i = 0; i < 2; ++i) {
    const QColor before = stage.colorAt(panelGround);
    strikeShortcut(stage);
    ASSERT_TRUE(waitUntil([&] { return stage.colorAt(panelGround) != before; }));
  }
  ASSERT_EQ(velicor.terminate(), 0) << velicor.log();

  const std::string ours = velicor.folder() + "/config";
  const std::string server = "/tmp/.X11-unix/X" + launch.display.substr(1) + "\"";
  int changes = 0, conversations = 0;
  std::vector<std::string> calls;
  for (const auto& thread : std::filesystem::directory_iterator(folder.path().toStdString()))
    std::ranges::move(linesOf(thread.path()), std::back_inserter(calls));
  for (const std::string& call : calls) {
    if (changesFiles(call)) {
      ++changes;
      // The last is the thread sanitizer's, where that is at work.
      EXPECT_THAT(call, AnyOf(HasSubstr(ours), HasSubstr("\"/dev/null\""), HasSubstr("\"/tmp/tsan.rodata.")));
    } else if (call.starts_with("connect(")) {
      ++conversations;
      // The C library looks for the service that keeps names at hand, and asks the name server about the
      // feed's host. Qt asks NetworkManager, on the system bus, whether there is a network.
      EXPECT_THAT(call,
                  AnyOf(HasSubstr(server), HasSubstr(bus.environment().substr(bus.environment().find('/'))),
                        HasSubstr("/dbus/system_bus_socket"), HasSubstr("/at-spi/"), HasSubstr("nscd/socket"),
                        HasSubstr("htons(53)")));
    } else if (call.starts_with("socket(")) {
      EXPECT_THAT(call, AnyOf(HasSubstr("AF_UNIX"), HasSubstr("AF_INET"), HasSubstr("AF_NETLINK")));
    } else if (call.starts_with("bind(")) {
      EXPECT_THAT(call, HasSubstr("AF_NETLINK")) << "nobody can call us";
    }
  }
  EXPECT_GE(changes, 2) << "the settings were written";
  EXPECT_GE(conversations, 3) << "with the server at least";
}

// ---- What stays in its memory

// Some pixels beside each other, 0xRRGGBB.
using Pixels = std::vector<std::uint32_t>;

// The fourth bytes mean nothing.
bool liesAt(const std::byte* memory, const Pixels& pixels) {
  for (std::size_t i = 0; i < pixels.size(); ++i)
    if (std::memcmp(memory + 4 * i, &pixels[i], 3) != 0) return false;
  return true;
}

bool liesIn(std::span<const std::byte> memory, const Pixels& pixels) {
  while (memory.size() >= 4 * pixels.size()) {
    const auto* const place = static_cast<const std::byte*>(
        memmem(memory.data(), memory.size() - 4 * (pixels.size() - 1), &pixels[0], 3));
    if (!place) return false;
    if (place + 4 * pixels.size() <= memory.data() + memory.size() && liesAt(place, pixels)) return true;
    memory = memory.last(static_cast<std::size_t>(memory.data() + memory.size() - place) - 1);
  }
  return false;
}

// Where in the process's memory, by its map, these pixels are.
std::vector<std::string> placesOf(const Pixels& pixels, qint64 process) {
  constexpr std::size_t largest = std::size_t{1} << 30;  // the sanitizers' books are larger
  const std::string folder = "/proc/" + std::to_string(process);
  const int memory = open((folder + "/mem").c_str(), O_RDONLY | O_CLOEXEC);
  std::vector<std::string> places;
  std::vector<std::byte> bytes;
  for (const std::string& line : linesOf(folder + "/maps")) {
    std::size_t begin = 0, end = 0;
    if (std::sscanf(line.c_str(), "%zx-%zx r", &begin, &end) != 2 || end - begin > largest) continue;
    bytes.resize(end - begin);
    std::size_t read = 0;
    while (read < bytes.size()) {
      const ssize_t got =
          pread(memory, bytes.data() + read, bytes.size() - read, static_cast<off_t>(begin + read));
      if (got <= 0) break;
      read += static_cast<std::size_t>(got);
    }
    if (liesIn(std::span(bytes).first(read), pixels)) places.push_back(line);
  }
  close(memory);
  return places;
}

class MemoryTest : public testing::TestWithParam<Surroundings> {
 protected:
  Stage stage_{GetParam()};
};

TEST_P(MemoryTest, HiddenItKeepsNothingOfTheScreen) {
  constexpr Pattern pattern{7};
  stage_.painter().lower(stage_.painter().showPattern({0, 0, 1280, 800}, pattern));
  stage_.painter().sync();
  Launch launch = stage_.launch();
  launch.mode = 0;
  RunningVelicor velicor(launch);
  const auto pixels = [](const QImage& picture) {
    Pixels row;
    for (int x = 0; x < 12; ++x)
      row.push_back(picture.pixel(loupeCentre.x + x, loupeCentre.y) & 0xFFFFFF);
    return row;
  };
  // A compositing manager, or the loupe, that has not painted yet is of one color, such as there are in any
  // memory.
  const auto isPicture = [](const Pixels& row) { return std::set(row.begin(), row.end()).size() > 1; };
  Pixels screen;
  ASSERT_TRUE(waitUntil([&] { return isPicture(screen = pixels(stage_.screenshot())); }));
  ASSERT_TRUE(stage_.shows(onFrameLine(loupeAtStart), frameYellow, 40)) << velicor.log();
  ASSERT_TRUE(velicor.waitForLog("capture running")) << velicor.log();
  ASSERT_TRUE(waitUntil([&] { return !placesOf(screen, velicor.processID()).empty(); }))
      << "there is what to wipe";
  Pixels heatmap;
  const auto showsHeatmap = [&] {
    heatmap = pixels(stage_.screenshot());
    return heatmap != screen && isPicture(heatmap);
  };
  ASSERT_TRUE(waitUntil([&] {
    stage_.mouse().click(exposureTab);
    return waitUntil(showsHeatmap, std::chrono::seconds(1));
  }));
  ASSERT_TRUE(waitUntil([&] { return !placesOf(heatmap, velicor.processID()).empty(); }));
  strikeShortcut(stage_);
  for (const Pixels& wiped : {screen, heatmap}) {
    waitUntil([&] { return placesOf(wiped, velicor.processID()).empty(); });
    EXPECT_THAT(placesOf(wiped, velicor.processID()), testing::IsEmpty()) << testing::PrintToString(wiped);
  }
  EXPECT_EQ(velicor.terminate(), 0) << velicor.log();
}

INSTANTIATE_TEST_SUITE_P(, MemoryTest,
                         testing::Values(Surroundings::windowManager,
                                         Surroundings::windowManagerAndCompositor),
                         [](const auto& test) { return nameOf(test.param); });

}  // namespace
}  // namespace velicor::test
