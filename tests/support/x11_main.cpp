#include "support/x11_main.h"

#include <memory>

#include <gmock/gmock.h>
#include <QApplication>

#include "platform/dispatch/main_queue.h"

namespace {

std::unique_ptr<velicor::test::XServer> server;

}  // namespace

velicor::test::XServer& velicor::test::xServer() { return *server; }

// The main of test programs whose windows are real: their toolkit talks to a private X server, which is there
// before the application object.
int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
  server = std::make_unique<velicor::test::XServer>("1440x900x24");
  qputenv("DISPLAY", QByteArray::fromStdString(server->name()));
  qputenv("QT_QPA_PLATFORM", "xcb");
  // No message bus: the toolkit would look for the accessibility service of the session around us.
  qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
  int result = 0;
  {
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    velicor::dispatch::MainQueue::shared().attach();
    result = RUN_ALL_TESTS();
    velicor::dispatch::MainQueue::shared().detach();
  }
  server.reset();
  return result;
}
