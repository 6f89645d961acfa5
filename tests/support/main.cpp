#include <QApplication>
#include <gmock/gmock.h>

#include "platform/dispatch/main_queue.h"

// Every test program has an application object and the main queue attached. The toolkit draws off screen; programs
// that need X servers start their own.
int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  velicor::dispatch::MainQueue::shared().attach();
  const int result = RUN_ALL_TESTS();
  velicor::dispatch::MainQueue::shared().detach();
  return result;
}
