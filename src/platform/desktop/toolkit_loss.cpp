#include "platform/desktop/toolkit_loss.h"

#include <X11/Xlib.h>

namespace velicor::desktop::toolkit {

namespace {

void (*lossHandler)() = nullptr;

int handleLoss(Display* /*display*/) {
  lossHandler();
  return 0;
}

}  // namespace

void setLossHandler(void (*handler)()) {
  lossHandler = handler;
  XSetIOErrorHandler(handler ? handleLoss : nullptr);
}

}  // namespace velicor::desktop::toolkit
