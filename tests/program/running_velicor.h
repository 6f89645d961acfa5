#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <QProcess>
#include <QTemporaryDir>

namespace velicor::test {

// How a run of the program begins. The display is the one of the stage unless `environment` says otherwise.
struct Launch {
  std::string display;
  int mode = 1;
  double opacity = 1;
  bool locked = false;
  int fps = 30;
  bool withSettings = true;                // false: the settings file does not exist yet
  std::vector<std::string> environment{};  // "NAME=value"
  std::vector<std::string> arguments{};
  std::vector<std::string> under{};  // a program, with its arguments, that becomes ours in the end
};

// The real program, with settings of its own, until it is ended, at the latest with this object.
class RunningVelicor {
 public:
  explicit RunningVelicor(const Launch& launch);
  ~RunningVelicor();
  RunningVelicor(const RunningVelicor&) = delete;
  RunningVelicor& operator=(const RunningVelicor&) = delete;

  // What it has written to standard error so far.
  std::string log();

  // And to standard output.
  std::string output() { return output_ += process_.readAllStandardOutput().toStdString(); }

  // Until the log holds the text.
  bool waitForLog(const std::string& text, std::chrono::milliseconds limit = std::chrono::seconds(60));

  // Until it has ended by itself, with its exit code; -1 when it crashed or runs on.
  int waitForExit(std::chrono::milliseconds limit = std::chrono::seconds(60));

  qint64 processID() const { return process_.processId(); }

  // SIGTERM, and the exit code.
  int terminate();

  // The settings file as it is now, empty where there is none.
  std::string settings() const;
  std::string settingsFile() const;

  // A folder that goes with this object.
  std::string folder() const { return folder_.path().toStdString(); }

 private:
  void writeSettings(const Launch& launch) const;

  QTemporaryDir folder_;
  QProcess process_;
  std::string log_;
  std::string output_;
};

}  // namespace velicor::test
