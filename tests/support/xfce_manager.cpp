#include "support/xfce_manager.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "support/x_client.h"

namespace velicor::test {

XfceManager::Folder::Folder() {
  std::string name = (std::filesystem::temp_directory_path() / "velicor-xfce-XXXXXX").string();
  if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
  path = name;
}

XfceManager::Folder::~Folder() {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

XfceManager::XfceManager(const XServer& server, Way way)
    : bus_({"env", "XDG_CONFIG_HOME=" + folder_.path, "XDG_CACHE_HOME=" + folder_.path, "dbus-daemon", "--session",
            "--nofork", "--nopidfile", "--address=unix:path=" + folder_.path + "/bus"}) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(120);
  while (!std::filesystem::exists(folder_.path + "/bus")) {
    if (std::chrono::steady_clock::now() > end) throw std::runtime_error("the message bus did not start");
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  const bool composing = way == Way::composing || way == Way::composingInstead;
  std::vector<std::string> command{"env",
                                   "DBUS_SESSION_BUS_ADDRESS=unix:path=" + folder_.path + "/bus",
                                   "XDG_CONFIG_HOME=" + folder_.path,
                                   "NO_AT_BRIDGE=1",
                                   "xfwm4",
                                   composing ? "--compositor=on" : "--compositor=off",
                                   "--sm-client-disable"};
  if (way == Way::instead || way == Way::composingInstead) command.emplace_back("--replace");
  manager_ = std::make_unique<WindowManager>(server, command);
  const XClient client(server.name());
  if (composing && !client.waitForSelectionOwner("_NET_WM_CM_S0", true))
    throw std::runtime_error("xfwm4 does not compose");
}

}  // namespace velicor::test
