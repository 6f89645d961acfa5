#include "diagnostics/system_report.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <sys/utsname.h>

#include <QFontInfo>
#include <QtGlobal>

#include "diagnostics/display_report.h"
#include "platform/base/operating_system.h"
#include "platform/base/product.h"
#include "platform/desktop/typeface.h"
#include "platform/gpu/device.h"
#include "platform/log/log.h"
#include "platform/settings/settings_file.h"
#include "platform/tray/status_area.h"

namespace velicor {

namespace {

// What says how the session is built and scaled; names and numbers only.
constexpr std::array telling{"XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP",     "QT_SCALE_FACTOR",
                             "QT_FONT_DPI",      "QT_SCREEN_SCALE_FACTORS", "QT_AUTO_SCREEN_SCALE_FACTOR"};

// What is logged meanwhile belongs to the answer.
class Remarks {
 public:
  Remarks() : before_(log::setSink([this](const log::Entry& entry) { lines_ += "  " + entry.text + "\n"; })) {}
  ~Remarks() { log::setSink(before_); }
  Remarks(const Remarks&) = delete;
  Remarks& operator=(const Remarks&) = delete;

  std::string text() const { return lines_.empty() ? "" : "remarks:\n" + lines_; }

 private:
  std::string lines_;
  log::Sink before_;
};

std::string kernel() {
  utsname names{};
  if (uname(&names) != 0) return "kernel unknown";
  return std::string(names.sysname) + " " + names.release + " " + names.machine;
}

std::string environment() {
  std::string result;
  for (const char* name : telling) {
    const char* value = std::getenv(name);
    if (value) result += (result.empty() ? "" : " ") + std::string(name) + "=" + value;
  }
  return result.empty() ? "nothing that matters" : result;
}

std::string statusArea(x11::Connection* server) {
  switch (tray::findStatusArea(server)) {
    case tray::StatusArea::items: return "StatusNotifier";
    case tray::StatusArea::itemsNobodyShows: return "StatusNotifier, without anybody who shows items";
    case tray::StatusArea::windows: return "XEmbed";
    case tray::StatusArea::none: break;
  }
  return "none";
}

std::string device() {
  const auto device = gpu::systemDefaultDevice();
  return device ? device->name() : "none";
}

std::string font() {
  const QString wanted = desktop::interfaceFont(12).family();
  const QString found = QFontInfo(desktop::interfaceFont(12)).family();
  return (found == wanted ? found : found + ", in the place of " + wanted).toStdString();
}

// Where the file lies is as private as the user's name.
std::string settingsState() {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(settings::userFile(), error);
  const char* folder = std::getenv("XDG_CONFIG_HOME") ? "the folder of XDG_CONFIG_HOME" : "~/.config";
  if (status.type() == std::filesystem::file_type::not_found) return std::string("absent from ") + folder;
  if (error) return "can't be looked at: " + error.message();
  return (std::filesystem::is_regular_file(status) ? "present in " : "not a file, in ") + std::string(folder);
}

}  // namespace

std::string systemReport(const Result<std::unique_ptr<x11::Connection>>& server) {
  const Remarks remarks;
  x11::Connection* const connection = server ? server->get() : nullptr;
  std::string report = std::string(product::name) + " " + std::string(product::version()) + ", build " +
                       std::string(product::build()) + "\nsystem: " + operatingSystem().name + ", " + kernel() +
                       "\ntoolkit: Qt " + qVersion() + "\nenvironment: " + environment() + "\n";
  report += connection ? displayReport(*connection) + "interface font: " + font() + "\n"
                       : "X server: none that can be reached\n";
  report += "status area: " + statusArea(connection) + "\nanalysis device: " + device() +
            "\nsettings: " + settingsState() + "\n";
  return report + remarks.text();
}

}  // namespace velicor
