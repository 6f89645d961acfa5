// What the settings mean for the loupe.
#include "app/app_state.h"
#include "loupe/loupe_controller.h"

namespace velicor {

void AppState::applyModeToLoupe() const {
  const auto present = loupe.lock();
  if (LiveTextureView* const view = present ? present->metalView() : nullptr) {
    view->setHidden(mode() == MetalProcessor::Mode::original);
  }
}

void AppState::applyLockToLoupe() const {
  const auto present = loupe.lock();
  if (!present) return;
  present->frameView().isLocked = locked();
  present->frameView().update();
  present->updateMousePassthrough();
}

void AppState::applyOpacityToLoupe() const {
  const auto present = loupe.lock();
  if (LiveTextureView* const view = present ? present->metalView() : nullptr) view->setAlphaValue(opacity());
}

}  // namespace velicor
