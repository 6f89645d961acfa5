#include "program/running_velicor.h"

#include <QDir>
#include <QFile>
#include <QProcessEnvironment>

#include "support/main_loop.h"

namespace velicor::test {

namespace {

QString configurationFolder(const QTemporaryDir& folder) { return folder.filePath("config"); }

}  // namespace

RunningVelicor::RunningVelicor(const Launch& launch) {
  if (launch.withSettings) writeSettings(launch);
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (const char* name : {"QT_QPA_PLATFORM", "QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_FONT_DPI",
                           "WAYLAND_DISPLAY", "XDG_SESSION_TYPE", "VELICOR_STATS", "VELICOR_DUMP"}) {
    environment.remove(name);
  }
  environment.insert("DBUS_SESSION_BUS_ADDRESS", "disabled:");
  environment.insert("DISPLAY", QString::fromStdString(launch.display));
  environment.insert("XDG_CONFIG_HOME", configurationFolder(folder_));
  environment.insert("XDG_RUNTIME_DIR", folder_.path());
  for (const std::string& entry : launch.environment) {
    const std::size_t end = entry.find('=');
    environment.insert(QString::fromStdString(entry.substr(0, end)), QString::fromStdString(entry.substr(end + 1)));
  }
  process_.setProcessEnvironment(environment);
  process_.setWorkingDirectory(folder_.path());
  QStringList command;
  for (const std::string& argument : launch.under) command << QString::fromStdString(argument);
  command << VELICOR_PROGRAM;
  for (const std::string& argument : launch.arguments) command << QString::fromStdString(argument);
  const QString program = command.takeFirst();
  process_.start(program, command);
}

RunningVelicor::~RunningVelicor() {
  if (process_.state() == QProcess::NotRunning) return;
  process_.terminate();
  if (process_.waitForFinished(5000)) return;
  process_.kill();
  process_.waitForFinished();
}

void RunningVelicor::writeSettings(const Launch& launch) const {
  QDir().mkpath(configurationFolder(folder_) + "/velicor");
  QFile file(QString::fromStdString(settingsFile()));
  file.open(QIODevice::WriteOnly);
  file.write(QString(R"({"format": "velicor-settings", "values": {"mode": %1, "fps": %2, "locked": %3,)"
                     R"( "opacity": {"double": "%4"}}})")
                 .arg(launch.mode)
                 .arg(launch.fps)
                 .arg(launch.locked ? "true" : "false")
                 .arg(launch.opacity)
                 .toUtf8());
}

std::string RunningVelicor::settingsFile() const {
  return (configurationFolder(folder_) + "/velicor/settings.json").toStdString();
}

std::string RunningVelicor::settings() const {
  QFile file(QString::fromStdString(settingsFile()));
  return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
}

std::string RunningVelicor::log() {
  log_ += process_.readAllStandardError().toStdString();
  return log_;
}

bool RunningVelicor::waitForLog(const std::string& text, std::chrono::milliseconds limit) {
  return waitUntil([&] { return log().find(text) != std::string::npos; }, limit);
}

int RunningVelicor::waitForExit(std::chrono::milliseconds limit) {
  if (!waitUntil([&] { return process_.state() == QProcess::NotRunning; }, limit)) return -1;
  return process_.exitStatus() == QProcess::NormalExit ? process_.exitCode() : -1;
}

int RunningVelicor::terminate() {
  process_.terminate();
  return waitForExit();
}

}  // namespace velicor::test
