#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

#include "platform/base/geometry.h"

namespace velicor::test {

// A program that runs on a display until it is ended, at the latest with this object, or when the thread that
// started it ends in whatever way.
class Program {
 public:
  explicit Program(const std::vector<std::string>& arguments, const std::string& display = {});
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  // Asks it to end, and waits until it has.
  void terminate();

  // Ends it without asking, and waits.
  void kill();

  // Holds it where it is, so that it neither draws nor answers.
  void freeze();
  void resume();

  pid_t processID() const { return process_; }

  // Processor time used so far.
  double cpuSeconds() const;

 private:
  void end(int signal);

  pid_t process_ = -1;
};

// A private X server on a display number that nobody else uses, without a window manager. Keeps its settings
// when clients come and go.
class XServer {
 public:
  explicit XServer(const std::string& screen = "1280x800x24", const std::vector<std::string>& more = {});

  // Such as ":7".
  const std::string& name() const { return name_; }
  Program& program() { return program_; }

 private:
  struct Pipe {
    Pipe();
    ~Pipe();
    std::string readNumber() const;
    int ends[2];
  };

  Pipe pipe_;
  Program program_;
  std::string name_;
};

// Programs that are started the way users have them. They return when the program does its work.
class WindowManager : public Program {
 public:
  explicit WindowManager(const XServer& server,
                         const std::vector<std::string>& command = {"openbox", "--sm-disable"});
};

// Another process with one window that shows a pattern; returns when that is mapped.
class Painter : public Program {
 public:
  Painter(const XServer& server, const DeviceRect& place, int seed);
};

// Another process with several connections that make windows, tiny and huge ones among them, change them in
// every way there is and destroy them, within the top left 700 x 500 pixels. Now and then one of them ends
// another's connection, which then comes back. Managed: with the window manager's help where it likes.
class Churner : public Program {
 public:
  struct Measure {
    int programs = 4;
    int windows = 50;  // of each, at most
    int rate = 500;    // changes a second
  };

  Churner(const XServer& server, int seed, bool managed, Measure measure);
};

class CompositingManager : public Program {
 public:
  explicit CompositingManager(const XServer& server);
};

}  // namespace velicor::test
