#include "support/x_server.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/x_client.h"

namespace velicor::test {

namespace {

std::vector<char*> pointers(const std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (const std::string& text : texts)
    result.push_back(const_cast<char*>(text.c_str()));
  result.push_back(nullptr);
  return result;
}

// The environment with another display, and without what would take a program to the session around us.
std::vector<std::string> environmentFor(const std::string& display) {
  std::vector<std::string> result;
  for (char** entry = environ; *entry; ++entry) {
    const std::string text = *entry;
    const bool replaced = text.starts_with("DISPLAY=") || text.starts_with("WAYLAND_DISPLAY=");
    if (!replaced) result.push_back(text);
  }
  if (!display.empty()) result.push_back("DISPLAY=" + display);
  return result;
}

std::vector<std::string> serverArguments(int readyFile, const std::string& screen,
                                         const std::vector<std::string>& more) {
  std::vector<std::string> arguments{"Xvfb",     "-displayfd", std::to_string(readyFile),
                                     "-screen",  "0",          screen,
                                     "-noreset", "-nolisten",  "tcp"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

}  // namespace

Program::Program(const std::vector<std::string>& arguments, const std::string& display) {
  const std::vector<std::string> environment = environmentFor(display);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  // What servers and managers have to say about fonts and keyboards is not what a test is about.
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  // A test that crashes takes its servers and managers along.
  std::vector<std::string> command{"setpriv", "--pdeathsig", "KILL", "--"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  const int result = posix_spawnp(&process_, command.front().c_str(), &actions, nullptr,
                                  pointers(command).data(), pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  if (result != 0) throw std::runtime_error("can't start " + arguments.front());
}

Program::~Program() { terminate(); }

void Program::terminate() { end(SIGTERM); }

void Program::kill() { end(SIGKILL); }

void Program::freeze() { ::kill(process_, SIGSTOP); }

void Program::resume() { ::kill(process_, SIGCONT); }

void Program::end(int signal) {
  if (process_ < 0) return;
  ::kill(process_, signal);
  waitpid(process_, nullptr, 0);
  process_ = -1;
}

double Program::cpuSeconds() const {
  std::ifstream file("/proc/" + std::to_string(process_) + "/schedstat");
  double nanoseconds = 0;
  file >> nanoseconds;
  return nanoseconds * 1e-9;
}

XServer::Pipe::Pipe() {
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  fcntl(ends[0], F_SETFD, FD_CLOEXEC);
}

XServer::Pipe::~Pipe() {
  close(ends[0]);
  if (ends[1] >= 0) close(ends[1]);
}

std::string XServer::Pipe::readNumber() const {
  std::string text;
  char letter = 0;
  while (read(ends[0], &letter, 1) == 1 && letter != '\n')
    text += letter;
  return text;
}

XServer::XServer(const std::string& screen, const std::vector<std::string>& more)
    : program_(serverArguments(pipe_.ends[1], screen, more)) {
  // With our copy closed a server that dies early ends the reading.
  close(pipe_.ends[1]);
  pipe_.ends[1] = -1;
  const std::string number = pipe_.readNumber();
  if (number.empty()) throw std::runtime_error("the X server did not start");
  name_ = ":" + number;
}

WindowManager::WindowManager(const XServer& server, const std::vector<std::string>& command)
    : Program(command, server.name()) {
  XClient client(server.name());
  const bool started = client.waitForProperty("_NET_SUPPORTING_WM_CHECK") && client.findManager();
  if (!started) throw std::runtime_error(command.front() + " did not start");
}

Painter::Painter(const XServer& server, const DeviceRect& place, int seed)
    : Program({VELICOR_PAINTER, std::to_string(place.x), std::to_string(place.y), std::to_string(place.width),
               std::to_string(place.height), std::to_string(seed)},
              server.name()) {
  const XClient client(server.name());
  if (!client.waitForProperty("VELICOR_PAINTER_" + std::to_string(seed))) {
    throw std::runtime_error("the painter did not start");
  }
}

Churner::Churner(const XServer& server, int seed, bool managed, Measure measure)
    : Program(
          {VELICOR_CHURNER, std::to_string(seed), managed ? "managed" : "unmanaged",
           std::to_string(measure.programs), std::to_string(measure.windows), std::to_string(measure.rate)},
          server.name()) {
  const XClient client(server.name());
  if (!client.waitForProperty("VELICOR_CHURNER")) throw std::runtime_error("the churner did not start");
}

CompositingManager::CompositingManager(const XServer& server)
    : Program({"picom", "--backend", "xrender", "--config", "/dev/null"}, server.name()) {
  const XClient client(server.name());
  if (!client.waitForSelectionOwner("_NET_WM_CM_S0", true)) throw std::runtime_error("picom did not start");
}

}  // namespace velicor::test
