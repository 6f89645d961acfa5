#include "app/velicor_app.h"

#include <csignal>
#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include <QApplication>

#include "analysis/metal_processor.h"
#include "app/about_panel.h"
#include "app/app_delegate.h"
#include "app/app_state.h"
#include "app/application_icon.h"
#include "app/command_line.h"
#include "app/server_loss.h"
#include "app/wishes.h"
#include "controls/tooltips.h"
#include "diagnostics/system_report.h"
#include "menubar/hot_key.h"
#include "platform/base/product.h"
#include "platform/desktop/application.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/desktop/typeface.h"
#include "platform/dispatch/clock.h"
#include "platform/dispatch/main_queue.h"
#include "platform/dispatch/termination_signals.h"
#include "platform/gpu/device.h"
#include "platform/hotkeys/hot_keys.h"
#include "platform/instance/single_instance.h"
#include "platform/log/log.h"
#include "platform/screencapture/x11/service.h"
#include "platform/settings/settings.h"
#include "platform/settings/settings_file.h"
#include "platform/x11/connection.h"
#include "platform/x11/session_kind.h"
#include "update/updates.h"

namespace velicor {

namespace {

void describeApplication() {
  QApplication::setApplicationName(QString::fromUtf8(product::name));
  QApplication::setApplicationVersion(QString::fromUtf8(product::version()));
  QApplication::setDesktopFileName(QString::fromUtf8(product::identifier));
  QApplication::setWindowIcon(application_icon::make());
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setFont(desktop::interfaceFont(12));
  controls::dressTooltips();
}

// The main queue belongs to the event loop as long as this lives.
struct AttachedMainQueue {
  AttachedMainQueue() { dispatch::MainQueue::shared().attach(); }
  ~AttachedMainQueue() { dispatch::MainQueue::shared().detach(); }
  AttachedMainQueue(const AttachedMainQueue&) = delete;
  AttachedMainQueue& operator=(const AttachedMainQueue&) = delete;
};

// The session ends soon after this, whatever becomes of the process by then.
void saveAtSessionEnd(settings::Settings& settings) {
  QObject::connect(qApp, &QGuiApplication::commitDataRequest, qApp, [&settings] {
    AppState::shared().saveSettings();
    settings.flush();
  });
}

int unavailable(const std::string& reason) {
  log::general(reason);
  return x11::exitUnavailable;
}

// The exit code where there is nothing to start: the program can't run here, or another one runs and has been told
// the wish. Asked before the toolkit, which would take its time, and would end the process in its own way.
std::optional<int> settled(Wish wish) {
  if (const auto reason = x11::waylandRefusal(x11::sessionEnvironment())) return unavailable(*reason);
  const auto connection = x11::Connection::open();
  if (!connection) return unavailable(connection.error().description);
  if (const auto reason = x11::waylandRefusal(**connection)) return unavailable(*reason);
  if (SingleInstance::tell(**connection, product::name, static_cast<std::uint32_t>(wish))) return 0;
  if (wish != Wish::quit) return std::nullopt;
  log::general("nothing to end: it doesn't run on this display");
  return 0;
}

// Beside another one that runs, and without a display too.
int describeSurroundings(int argc, char** argv) {
  gpu::findGraphicsProcessors();
  const auto connection = x11::Connection::open();
  std::unique_ptr<QCoreApplication> toolkit;
  if (connection) {
    toolkit = std::make_unique<QApplication>(argc, argv);
  } else {
    toolkit = std::make_unique<QCoreApplication>(argc, argv);
  }
  std::cout << systemReport(connection) << std::flush;
  return 0;
}

int live(dispatch::TerminationSignals& termination, Wish wish) {
  const AttachedMainQueue mainQueue;
  // Before the first window of ours exists.
  auto service = screencapture::makeX11Service({}, x11::OwnClients::shared(), ServerLoss::endProcess);
  if (!service) return unavailable(service.error().description);
  const auto desktop = desktop::Desktop::open();
  if (!desktop) return unavailable(desktop.error().description);
  const auto instance = SingleInstance::claim(**desktop, product::name, static_cast<std::uint32_t>(wish));
  if (!instance) return 0;

  settings::Settings settings(settings::userFile(), dispatch::systemClock());
  const ServerLoss serverLoss(**desktop, settings);
  const AppState::Installation installation({.settings = settings,
                                             .screenList = (*desktop)->screens(),
                                             .captureService = std::move(*service),
                                             .clock = dispatch::systemClock(),
                                             .makeProcessor = [] { return MetalProcessor::create(); }});
  hotkeys::HotKeys hotKeys(**desktop);
  const HotKey::Installation shortcut({.settings = settings, .hotKeys = hotKeys});
  const updates::Installation updateChecks(settings, (*desktop)->screens());
  const AboutPanel::Installation about(**desktop);
  AppDelegate delegate(**desktop, settings, dispatch::systemClock());
  const Subscription wanted = instance->wanted.subscribe(fulfil);
  saveAtSessionEnd(settings);
  termination.deliverTo(desktop::terminate);
  delegate.applicationDidFinishLaunching();
  if (const auto mode = modeOf(wish)) AppState::shared().setMode(*mode);
  const int result = QApplication::exec();
  delegate.applicationWillTerminate();
  return result;
}

}  // namespace

int VelicorApp::run(int argc, char** argv) {
  const CommandLine line = readCommandLine(argc, argv);
  if (line.task == CommandLine::Task::end) return line.exitCode;
  // A server that hangs up is an error of the request that finds it gone, not the end.
  std::signal(SIGPIPE, SIG_IGN);
  qputenv("QT_QPA_PLATFORM", "xcb");
  if (line.task == CommandLine::Task::diagnose) return describeSurroundings(argc, argv);
  dispatch::TerminationSignals termination;
  if (const auto code = settled(line.wish)) return *code;
  gpu::findGraphicsProcessors();
  QApplication application(argc, argv);
  describeApplication();
  return live(termination, line.wish);
}

}  // namespace velicor
